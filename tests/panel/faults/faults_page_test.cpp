#include "panel/faults/faults_page.h"

#include <QTest>

#include "panel/main_window.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr int watchedWords = 24; // each holds its own address

class TheFaultsPage : public PanelWorld {
protected:
    TheFaultsPage()
    {
        for (int word = 0; word < watchedWords; ++word)
            options.set.push_back("R_W:" + std::to_string(100 + 40 * word) + "=" +
                                  std::to_string(100 + 40 * word));
        // Given up soon, and asked again soon.
        setup.simulated = true;
        setup.line = "115200,8,EVEN,1";
        setup.timeoutMs = 100;
        setup.maxProbeMs = 200;
        window.resize(1280, 800);
        window.showPage(static_cast<int>(window.pages().size()) - 1);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void openOwn()
    {
        std::vector<std::string> addresses;
        for (int word = 0; word < watchedWords; ++word)
            addresses.push_back("R_W:" + std::to_string(100 + 40 * word));
        watch(addresses);
        QObject::connect(&desk, &PanelDesk::valuesChanged, &window, [this]() { look(); });
        desk.open(setup, options);
        ASSERT_TRUE(
            waitUntil([this]() { return allAre(ValueState::good) && desk.controllerReport(); }));
    }
    // Whatever happens on the line.
    void look()
    {
        for (const PanelValue& value : desk.tags().values)
            if (const View* const view = desk.book().find(value.address)) {
                ASSERT_EQ(view->value.at(0) + 256 * view->value.at(1), value.address.first);
                ++looks;
            }
    }
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return window.findChild<FaultsPage*>()->findChild<Widget*>(name);
    }
    void click(const char* button)
    {
        QTest::mouseClick(part<QPushButton>(button), Qt::LeftButton);
    }
    void type(const char* field, const char* text)
    {
        auto* const box = part<QAbstractSpinBox>(field);
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, text);
        QTest::keyClick(box, Qt::Key_Return);
    }
    std::string sentence() const
    {
        return part<QLabel>("faultSentence")->text().toStdString();
    }
    std::string count(const char* kind) const
    {
        return part<QLabel>(kind)->text().toStdString();
    }
    RequestCounters counters() const
    {
        return desk.statistics() ? desk.statistics()->total() : RequestCounters();
    }
    const simulator::Conditions& conditions() const
    {
        return desk.controllerReport()->conditions;
    }
    bool waitForConditions(const std::function<bool()>& asWanted)
    {
        return waitUntil([this, asWanted]() { return desk.controllerReport() && asWanted(); });
    }

    MainWindow window{desk};
    long long looks = 0;
};

TEST_F(TheFaultsPage, SpoilsRepliesAtTheRateThatIsSetWhileNoValueIsEverAWrongOne)
{
    openOwn();
    EXPECT_THAT(sentence(), StartsWith("Nothing is wrong."));
    const long long repeated = counters().retries;
    type("rate-flip", "20");
    type("rate-station", "10.5");
    type("rate-any", "30");
    EXPECT_EQ(part<QSlider>("slider-station")->value(), 105);
    EXPECT_THAT(sentence(), testing::AnyOf(StartsWith("Replies suffer."),
                                           StartsWith("Requests have been given up")));
    ASSERT_TRUE(waitForConditions([this]() {
        return conditions().faults ==
               std::vector<std::string>{"flip=20%", "station=10.5%", "any=30%"};
    }));
    ASSERT_TRUE(waitUntil([&]() {
        return counters().retries > repeated + 20 && desk.controllerReport()->counts.faulty > 20;
    }));
    EXPECT_TRUE(waitUntil([this]() { return !count("count-flip").empty(); }));
    EXPECT_EQ(count("count-any"), ""); // counted as what it became
    EXPECT_THAT(count("faultCounters"), HasSubstr("had a fault"));
    click("noFaults");
    EXPECT_EQ(part<QDoubleSpinBox>("rate-flip")->value(), 0);
    ASSERT_TRUE(waitForConditions([this]() { return conditions().faults.empty(); }));
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_GT(looks, watchedWords);
}

TEST_F(TheFaultsPage, SetsARateWithTheKeysOfItsSlider)
{
    openOwn();
    auto* const slider = part<QSlider>("slider-silence");
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_PageUp);
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_EQ(part<QDoubleSpinBox>("rate-silence")->value(), 11);
    ASSERT_TRUE(waitForConditions(
        [this]() { return conditions().faults == std::vector<std::string>{"silence=11%"}; }));
    QTest::keyClick(slider, Qt::Key_Home);
    EXPECT_EQ(part<QDoubleSpinBox>("rate-silence")->value(), 0);
    EXPECT_TRUE(waitForConditions([this]() { return conditions().faults.empty(); }));
}

TEST_F(TheFaultsPage, LeavesTheControllerAsSlowAsItWasStarted)
{
    constexpr int startedWith = 7;
    options.responseTimeMs = startedWith;
    openOwn();
    EXPECT_EQ(part<QSpinBox>("responseTime")->value(), startedWith);
    type("rate-silence", "1");
    ASSERT_TRUE(waitForConditions([this]() { return !conditions().faults.empty(); }));
    EXPECT_EQ(conditions().responseTimeMs, startedWith);
    type("responseTime", "20");
    ASSERT_TRUE(waitForConditions([this]() { return conditions().responseTimeMs == 20; }));
    click("noFaults");
    ASSERT_TRUE(waitForConditions([this]() { return conditions().faults.empty(); }));
    EXPECT_EQ(conditions().responseTimeMs, startedWith);
}

TEST_F(TheFaultsPage, MakesTheControllerSlower)
{
    openOwn();
    type("responseTime", "60");
    ASSERT_TRUE(waitForConditions([this]() { return conditions().responseTimeMs == 60; }));
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 1; }));
    // It cannot be shorter.
    EXPECT_GE(desk.state().cycle, std::chrono::milliseconds(60));
    EXPECT_TRUE(allAre(ValueState::good));
}

TEST_F(TheFaultsPage, SwitchesTheControllerOffAndOn)
{
    openOwn();
    const long long givenUp = counters().abandoned;
    click("power");
    EXPECT_EQ(part<QPushButton>("power")->text(), "S&witch the controller on");
    EXPECT_THAT(sentence(), StartsWith("The controller is switched off"));
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
    EXPECT_TRUE(waitUntil([&]() { return counters().abandoned > givenUp; }));
    EXPECT_THAT(sentence(), HasSubstr("their values are old"));
    EXPECT_EQ(desk.state().phase, LinePhase::open);
    click("power");
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_TRUE(waitUntil([this]() { return desk.state().isGood; }));
    EXPECT_THAT(sentence(), StartsWith("Nothing is wrong."));
}

TEST_F(TheFaultsPage, PullsTheCableAndPlugsItInAgain)
{
    openOwn();
    const std::string port = desk.state().port;
    click("cable");
    EXPECT_EQ(part<QPushButton>("cable")->text(), "Pl&ug the cable in");
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::away; }));
    EXPECT_TRUE(allAre(ValueState::old));
    EXPECT_THAT(sentence(), StartsWith("The cable is pulled"));
    EXPECT_FALSE(QFileInfo(QString::fromStdString(port)).isSymLink());
    click("cable");
    EXPECT_THAT(sentence(), StartsWith("The cable is back"));
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::open; }));
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(desk.state().port, port);
}

TEST_F(TheFaultsPage, BeginsWithoutFaultsOnEachLine)
{
    openOwn();
    type("rate-late", "1");
    click("power");
    ASSERT_TRUE(waitForConditions([this]() { return !conditions().isOn; }));
    openOwn();
    EXPECT_EQ(part<QDoubleSpinBox>("rate-late")->value(), 0);
    EXPECT_EQ(part<QPushButton>("power")->text(), "S&witch the controller off");
    EXPECT_TRUE(conditions().isOn);
    EXPECT_TRUE(conditions().faults.empty());
}

TEST_F(TheFaultsPage, SaysThatAnotherLineHasNoFaultsOnPurpose)
{
    EXPECT_THAT(sentence(), HasSubstr("no line is open"));
    EXPECT_FALSE(part<QPushButton>("power")->isEnabled());
    setup.simulated = false;
    watch({"R_W:100"});
    open();
    EXPECT_THAT(sentence(), HasSubstr("this line leads to another one"));
    for (const char* const button : {"power", "cable", "noFaults"})
        EXPECT_FALSE(part<QPushButton>(button)->isEnabled()) << button;
    EXPECT_FALSE(part<QSlider>("slider-flip")->isEnabled());
    EXPECT_FALSE(desk.controllerReport());
}

TEST_F(TheFaultsPage, HasARowForEachKindOfFault)
{
    for (int kind = 0; kind <= static_cast<int>(simulator::FaultKind::any); ++kind) {
        const std::string name = simulator::faultName(static_cast<simulator::FaultKind>(kind));
        const auto* const rate = part<QDoubleSpinBox>(("rate-" + name).c_str());
        ASSERT_TRUE(rate) << name;
        EXPECT_THAT(rate->accessibleName().toStdString(), HasSubstr(name));
        EXPECT_FALSE(part<QSlider>(("slider-" + name).c_str())->accessibleName().isEmpty());
    }
}

} // namespace

} // namespace dov417
