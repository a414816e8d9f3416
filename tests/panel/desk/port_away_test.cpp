// Nothing is written while the port is away, and nothing of it is left when the port is back.
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;

class APortThatGoes : public PanelWorld {
protected:
    void begin()
    {
        options.link = folder.filePath("line").toStdString();
        watch({"R_W:100", "R_W:101"});
        open();
        unlock();
        ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::open; }));
    }
    void setPlugged(bool isPlugged)
    {
        conditions.isPlugged = isPlugged;
        controller->setConditions(conditions);
        const LinePhase phase = isPlugged ? LinePhase::open : LinePhase::away;
        ASSERT_TRUE(waitUntil([&]() { return desk.state().phase == phase; }));
    }
    std::string refusal(std::size_t place)
    {
        return complaint([&]() { desk.write(desk.tags().values.at(place), "7"); });
    }
    void switchOnAgain()
    {
        conditions.isOn = true;
        setPlugged(true);
        const long long cycles = desk.state().cycles;
        ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    }

    simulator::Conditions conditions;
};

TEST_F(APortThatGoes, TakesNoWriteUntilItIsBackAndUnlocked)
{
    begin();
    setPlugged(false);
    EXPECT_EQ(refusal(0), "the port is away");
    EXPECT_TRUE(desk.writes().empty());
    EXPECT_FALSE(desk.state().isUnlocked);
    desk.setUnlocked(true);
    switchOnAgain();
    EXPECT_FALSE(desk.state().isUnlocked) << "another device may be there now";
    EXPECT_THAT(refusal(0), HasSubstr("writing is locked on this line"));
    unlock();
    desk.write(desk.tags().values.at(0), "7");
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(held("R_W", 100), 7);
}

TEST_F(APortThatGoes, EndsTheWritesThatAreUnderWay)
{
    setup.timeoutMs = 10000;
    begin();
    bool isOff = false;
    controller->onReport([&isOff](const ControllerReport&) { isOff = true; });
    conditions.isOn = false;
    controller->setConditions(conditions);
    ASSERT_TRUE(waitUntil([&]() { return isOff; }));
    controller->onReport(nullptr);
    desk.write(desk.tags().values.at(0), "7");
    desk.write(desk.tags().values.at(1), "8");
    ASSERT_TRUE(waitUntil([this]() { return desk.state().writesUnderWay == 2; }));
    setPlugged(false);
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    for (const PanelWrite& write : desk.writes()) {
        EXPECT_FALSE(write.result.accepted);
        EXPECT_THAT(write.result.reason, HasSubstr("is gone; whether the controller has taken what "
                                                   "was on its way is not known"));
    }
    switchOnAgain();
    EXPECT_EQ(desk.state().writesUnderWay, 0U);
    EXPECT_EQ(held("R_W", 101), 0) << "it went out when the port was back";
}

TEST_F(APortThatGoes, LeavesTheOwnControllersLineUnlocked)
{
    setup.simulated = true;
    watch({"R_W:100"});
    desk.open(setup);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    ASSERT_TRUE(desk.state().isUnlocked);
    conditions.isPlugged = false;
    desk.setConditions(conditions);
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::away; }));
    EXPECT_TRUE(desk.state().isUnlocked);
    EXPECT_EQ(refusal(0), "the port is away");
    conditions.isPlugged = true;
    desk.setConditions(conditions);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    desk.write(desk.tags().values.at(0), "7");
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_TRUE(desk.writes().back().result.accepted) << desk.writes().back().result.reason;
}

TEST_F(APortThatGoes, RefusesADownloadInTheSameWords)
{
    begin();
    setPlugged(false);
    const std::vector<RecipeEntry> entries = {{desk.tags().items.front(), {7, 0}}};
    EXPECT_EQ(
        complaint([&]() { desk.moveRecipe(desk.lineNumber(), RecipeKind::download, entries); }),
        "the port is away");
}

} // namespace

} // namespace dov417
