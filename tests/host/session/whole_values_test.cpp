// Values of several words, of which no two replies may hold parts.
#include <algorithm>
#include <gmock/gmock.h>
#include <map>
#include <optional>

#include "session/recipe_layout.h"
#include "session/single_reads.h"
#include "session_world.h"

namespace dov417 {

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Le;

constexpr int registersOfR = 0x0500;
const char* const torn = "its words belong to two values of others: read it alone";

Address quadWords(int first, int length = 4)
{
    Address address = words("R_D", first, length);
    address.width = Width::quadWord;
    return address;
}

Address text(int first, int length)
{
    Address address = words("R_W", first, length);
    address.width = Width::text;
    return address;
}

class WholeValuesOnALine : public SessionOnALine {
protected:
    void SetUp() override
    {
        session = std::make_unique<Session>(library, SessionSettings{2, 0});
        beAController();
        // All registers count up between any two requests: parts of two replies differ.
        const auto answerRequest = slave.arrived;
        slave.arrived = [this, answerRequest](const QByteArray& bytes) {
            for (int word = 0; isCounting && word < 300; ++word)
                registers[registersOfR + word] = requests;
            answerRequest(bytes);
        };
    }

    void open(int maxOption, int maxOfController)
    {
        line.maxRegisters = maxOption;
        maxRegisters = maxOfController;
        ASSERT_TRUE(session->open(line).accepted);
    }

    // Why each could not be read.
    std::vector<std::string> read(const std::vector<Address>& wanted)
    {
        std::optional<std::vector<std::string>> reasons;
        readAll(*session, wanted, [&](const ReadResults& results) {
            reasons.emplace();
            for (const Result& each : results)
                reasons->push_back(each.reason);
        });
        EXPECT_TRUE(waitUntil([&]() { return reasons.has_value(); }));
        return reasons.value_or(std::vector<std::string>());
    }

    // Is what the cache holds of one reply?
    bool isWhole(const Address& address) const
    {
        return isWhole(session->cachedBytes(address));
    }
    static bool isWhole(const std::vector<unsigned char>& bytes)
    {
        for (std::size_t i = 2; i < bytes.size(); ++i)
            if (bytes.at(i) != bytes.at(i - 2))
                return false;
        return true;
    }

    bool isCounting = true;
};

TEST_F(WholeValuesOnALine, WhatLiesAcrossTwoValuesOfAnotherReadIsNotShown)
{
    open(noMaximum, 128);
    // The value in the middle straddles the two others, which are read after it or before.
    EXPECT_THAT(read({quadWords(0, 8), quadWords(2)}), ElementsAre(torn, torn));
    EXPECT_THAT(read({quadWords(2), quadWords(0), quadWords(4)}), ElementsAre(torn, torn, torn));
    EXPECT_THAT(read({doubleWords("R_D", 3), quadWords(0, 8)}), ElementsAre(torn, ""));
    EXPECT_TRUE(isWhole(quadWords(0)));
    EXPECT_TRUE(isWhole(quadWords(4)));
    EXPECT_THAT(read({text(0, 5), text(4, 6)}), ElementsAre(torn, ""));
    EXPECT_TRUE(isWhole(text(4, 6)));
    EXPECT_THAT(read({text(1, 6), quadWords(0, 8)}), ElementsAre("", torn));
    EXPECT_TRUE(isWhole(text(1, 6)));
    EXPECT_THAT(read({text(5, 5), text(0, 6)}), ElementsAre(torn, ""))
        << "by as many words as the shorter has";
}

TEST_F(WholeValuesOnALine, WhatLiesWithinOneOrBesideIsShown)
{
    open(noMaximum, 128);
    const std::vector<Address> inside = {doubleWords("R_D", 2), quadWords(0, 8), quadWords(8),
                                         text(20, 9),           text(22, 3),     words("R_W", 21)};
    EXPECT_THAT(read(inside), Each(""));
    for (const Address& address : inside)
        EXPECT_TRUE(isWhole(valueCount(address) == 1 ? address : quadWords(4)));
    // The same words at another station or in another area are others.
    Address elsewhere = quadWords(2);
    elsewhere.station = 2;
    EXPECT_THAT(read({quadWords(0), elsewhere}), Each(""));
}

TEST_F(WholeValuesOnALine, ATextOfAPartedRequestIsOfOnePart)
{
    open(16, 16);
    std::map<int, int> seen; // by the first word
    QObject::connect(session.get(), &Session::changed, session.get(), [&](const ViewChanges& told) {
        for (const ViewChange& change : told)
            if (change.view.address.width == Width::text) {
                ++seen[change.view.address.first];
                EXPECT_TRUE(isWhole(change.view.value)) << change.view.address.first;
            }
    });
    // Between single words, so that cutting every 16 words would go through them.
    session->watch({words("R_W", 0, 10), text(10, 13), words("R_W", 23, 8), text(31, 16)});
    ASSERT_TRUE(waitUntil([&]() { return seen[10] > 20 && seen[31] > 20; }));
    EXPECT_THAT(counts, Each(Le(16)));
}

TEST_F(WholeValuesOnALine, ATextThatTheControllerDoesNotSendWholeIsNotShown)
{
    open(learnedMaximum, 16);
    EXPECT_THAT(read({text(0, 17)}), ElementsAre("exception 3 (illegal data value)"));
    session->watch({text(0, 17)});
    std::string reason;
    QObject::connect(session.get(), &Session::abandoned, session.get(),
                     [&](const std::string&, const std::string& why) { reason = why; });
    ASSERT_TRUE(waitUntil([&]() { return !reason.empty(); }));
    EXPECT_EQ(reason, "exception 3 (illegal data value)");
    EXPECT_EQ(session->views().front().quality(), Quality::neverRead);
}

TEST_F(WholeValuesOnALine, WhereAPartOfOneIsWrittenTheNextReplyDecides)
{
    open(noMaximum, 128);
    std::size_t told = 0;
    QObject::connect(session.get(), &Session::changed, session.get(), [&](const ViewChanges& news) {
        for (const ViewChange& change : news)
            if (change.view.hasValue && ++told > 0) {
                EXPECT_TRUE(isWhole(change.view.value));
            }
    });
    session->watch({quadWords(0), text(10, 5)});
    ASSERT_TRUE(waitUntil([&]() { return told > 4; })); // they are known
    for (int number = 0; number < 10; ++number) {
        // What the rest of the value is meanwhile, only the controller knows.
        session->write(wordWrite("R_W", number % 2 == 0 ? 1 : 12, 0xEE), outcome(number));
        ASSERT_TRUE(waitForOutcomes(static_cast<std::size_t>(number) + 1));
        EXPECT_EQ(outcomes.at(number), "accepted");
        const std::size_t before = told;
        ASSERT_TRUE(waitUntil([&]() { return told > before + 4; }));
    }
}

TEST_F(WholeValuesOnALine, ATextIsWrittenInOneRequest)
{
    isCounting = false;
    open(noMaximum, 128);
    const Address address = text(100, 120);
    session->write({address, std::vector<unsigned char>(240, 'A')}, outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_THAT(counts, ElementsAre(120));
    EXPECT_EQ(registers.at(registersOfR + 219), 0x4141);
}

TEST_F(WholeValuesOnALine, OverlappingTextsAreNoRecipeThatCutsThem)
{
    const RecipeLayout layout = layOutRecipe({words("R_W", 0, 7), text(7, 120), text(127, 120)});
    std::vector<int> ends;
    for (const std::vector<RecipeRecord>& round : layout.rounds)
        for (const RecipeRecord& record : round)
            ends.push_back(record.address.first + record.address.length);
    std::sort(ends.begin(), ends.end());
    EXPECT_THAT(ends, ElementsAre(7, 127, 247));
    EXPECT_EQ(complaint([] {
                  layOutRecipe({text(0, 120), text(100, 120)});
              }),
              "values overlap so that no request holds them whole: move them in recipes of their "
              "own");
}

} // namespace

} // namespace dov417
