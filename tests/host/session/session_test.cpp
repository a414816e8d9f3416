#include "session/session.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

#include "line/failure.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

Write wordWrite(const char* regName, int address, unsigned char value)
{
    Write write;
    write.address.regName = regName;
    write.address.first = address;
    write.data = {value, 0};
    return write;
}

// The slave repeats every request, which confirms a single write.
class SessionOnALine : public ::testing::Test {
protected:
    void SetUp() override
    {
        SessionEvents events;
        events.written = [this](int number, bool accepted, const std::string& reason) {
            outcomes[number] = accepted ? "accepted" : reason;
        };
        events.readOnce = events.written;
        events.recipeEnded = [this](bool accepted, const std::string& reason) {
            recipeOutcome = accepted ? "accepted" : reason;
        };
        LineSettings line;
        line.device = slave.port();
        session = std::make_unique<Session>(library, SessionSettings{3, 20}, line, events,
                                            RunnerEvents());
        slave.arrived = [this](const QByteArray& bytes) {
            received += bytes;
            slave.send(bytes);
        };
        session->runner().start();
    }

    bool waitForOutcomes(std::size_t count)
    {
        return waitUntil([this, count]() { return outcomes.size() == count; });
    }

    Library library{DOV417_LIBRARY};
    PtySlave slave;
    QByteArray received;
    std::map<int, std::string> outcomes;
    std::string recipeOutcome;
    std::unique_ptr<Session> session;
};

TEST_F(SessionOnALine, EqualWritesEachHaveAnOutcomeAndGoOutInOrder)
{
    // The driver alone would replace the queued one by the other.
    std::vector<int> numbers;
    for (unsigned char value = 1; value <= 3; ++value)
        numbers.push_back(session->write(wordWrite("R_W", 100, value)));
    ASSERT_TRUE(waitForOutcomes(3));
    for (const int number : numbers)
        EXPECT_EQ(outcomes.at(number), "accepted");
    EXPECT_EQ(received.toHex().toStdString(), "010605640001"
                                              "0919"
                                              "010605640002"
                                              "4918"
                                              "010605640003"
                                              "88d8");
}

TEST_F(SessionOnALine, MoreWritesThanTheDriverQueuesAllGoOut)
{
    constexpr int count = 700; // the driver drops writes beyond 513
    for (int address = 0; address < count; ++address)
        session->write(wordWrite("R_W", address, 7));
    EXPECT_EQ(session->writesUnderWay(), static_cast<std::size_t>(count));
    ASSERT_TRUE(waitForOutcomes(count));
    EXPECT_EQ(received.size(), 8 * count);
    for (const auto& [number, outcome] : outcomes)
        EXPECT_EQ(outcome, "accepted") << number;
    EXPECT_EQ(session->writesUnderWay(), 0U);
}

TEST_F(SessionOnALine, AShortAddressInsideALongOneLeavesNoWordUnread)
{
    Address all;
    all.regName = "R_W";
    all.first = 0;
    all.length = 300;
    Address some = all;
    some.first = 20;
    some.length = 11;
    session->watch({all, some});
    std::set<int> planned;
    for (int i = 0; i < library.driver->readList.size(); ++i)
        for (int word = 0; word < library.driver->readList.at(i).length; ++word)
            planned.insert(library.driver->readList.at(i).address + word);
    EXPECT_EQ(planned.size(), 300U);
}

TEST_F(SessionOnALine, WhatTheDriverDoesNotTakeIsReportedAndTheOthersGoOut)
{
    const int unknown = session->write(wordWrite("X_W", 1, 1));
    const int known = session->write(wordWrite("R_W", 1, 1));
    Address nowhere;
    nowhere.regName = "X_W";
    const int unread = session->readOnce(nowhere);
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_EQ(outcomes.at(unknown), "the driver does not take it");
    EXPECT_EQ(outcomes.at(unread), "the driver does not take it");
    EXPECT_EQ(outcomes.at(known), "accepted");
}

TEST_F(SessionOnALine, AValueThatStaysTheSameIsConfirmedByEachReply)
{
    // The age in the table counts from the last reply.
    std::vector<Clock::time_point> answered;
    slave.arrived = [&](const QByteArray& bytes) {
        received += bytes;
        if (received.size() % 8 != 0)
            return;
        answered.push_back(Clock::now());
        if (answered.size() <= 3)
            slave.send(QByteArray::fromHex("010302002A399B"));
    };
    Address address;
    address.regName = "R_W";
    address.first = 100;
    session->watch({address});
    for (std::size_t reply = 1; reply <= 3; ++reply) {
        // The next request goes out once this reply has been dealt with.
        ASSERT_TRUE(waitUntil([&]() { return answered.size() > reply; }));
        const View& view = session->views().at(0);
        EXPECT_GE(view.refreshed, answered.at(reply - 1)) << "reply " << reply;
        EXPECT_EQ(view.changes, 0);
    }
}

TEST_F(SessionOnALine, ARecipeWithoutAddressesSetsNoFlag)
{
    // With the flag set the driver would repeat the frame of the first write for ever.
    session->write(wordWrite("R_W", 100, 1));
    ASSERT_TRUE(waitForOutcomes(1));
    RecipeLayout layout;
    layout.rounds.emplace_back(); // nothing in it, so the driver takes none of it
    session->transferRecipe(layout, RecipeTransfer::download);
    session->write(wordWrite("R_W", 100, 2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(recipeOutcome, "the driver took none of the recipe's addresses");
    EXPECT_EQ(received.toHex().toStdString(), "010605640001"
                                              "0919"
                                              "010605640002"
                                              "4918");
}

TEST_F(SessionOnALine, ABroadcastOfARegisterBitIsRefusedBeforeItBlocksTheQueue)
{
    Write bit = wordWrite("R_bit", 16, 1);
    bit.address.width = Width::bit;
    bit.address.station = 0;
    EXPECT_THROW(session->write(bit), UsageFailure);
}

} // namespace

} // namespace dov417
