// Writes of which the controller says, or the line shows, that they are not what was meant.
#include <algorithm>
#include <gmock/gmock.h>

#include "session/write_job.h"
#include "session_world.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;

constexpr int addressOfR = 0x0500; // R_W:0 on the line
constexpr int clampedTo = 100;     // by the controller

class DoubtfulWrites : public SessionOnALine {
protected:
    DoubtfulWrites()
    {
        beAController();
    }

    void watch(const Address& address)
    {
        session->watch({address});
        ASSERT_TRUE(
            waitUntil([this]() { return session->views().at(0).quality() == Quality::good; }));
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this](const ViewChanges& changes) {
                             for (const ViewChange& change : changes)
                                 if (change.view.quality() == Quality::good)
                                     good.push_back(number(change.view));
                         });
    }

    // The controller holds what it makes of a value, and says so.
    void clamp()
    {
        sendReply = [this](const QByteArray& reply) {
            QByteArray said = reply;
            if (reply.at(1) == 6) {
                registers[addressOfR + 10] = std::min(registers[addressOfR + 10], clampedTo);
                said = reply.left(4);
                said.append('\0').append(static_cast<char>(registers[addressOfR + 10]));
                said = withCrc(said);
            }
            slave.send(said);
        };
    }

    std::vector<int> good; // values, as they were shown
};

TEST_F(DoubtfulWrites, AValueThatTheControllerMadeAnotherOfIsNeverShown)
{
    registers[addressOfR + 10] = 7;
    clamp();
    watch(words("R_W", 10));
    Result said;
    bool isSaid = false;
    session->write(wordWrite("R_W", 10, 200), [&](const Result& result) {
        said = result;
        isSaid = true;
    });
    ASSERT_TRUE(waitUntil([&]() { return isSaid; }));
    EXPECT_TRUE(said.accepted);
    EXPECT_EQ(said.reason, "it was answered with another value: 100");
    ASSERT_TRUE(waitUntil([this]() { return !good.empty() && good.back() == clampedTo; }));
    EXPECT_EQ(std::count(good.begin(), good.end(), 200), 0);
    EXPECT_EQ(session->doubts(), 0);
}

TEST_F(DoubtfulWrites, AValueThatTheControllerMadeAnotherOfIsToldAsWhatItHolds)
{
    clamp();
    bool isDone = false;
    WriteJob job(*session, [&isDone]() { isDone = true; });
    WriteTask task;
    task.item.address = words("R_W", 10);
    task.data = {200, 0};
    job.start({task});
    ASSERT_TRUE(waitUntil([&isDone]() { return isDone; }));
    EXPECT_EQ(job.tasks().at(0).result, WriteResult::different);
    EXPECT_EQ(job.tasks().at(0).after, (std::vector<unsigned char>{clampedTo, 0}));
}

// The bits beside the one that is written are those that were read just before: replies to another
// request, maybe.
TEST_F(DoubtfulWrites, ABitIsNotWrittenOnceTheReadBeforeItIsInDoubt)
{
    watch(words("R_W", 20));
    int writes = 0;
    sendReply = [this, &writes](const QByteArray& reply) {
        if (reply.at(1) == 3 || reply.at(1) == 8) {
            slave.send(reply);
            return;
        }
        ++writes; // it is not answered, but a read is once more
        slave.send(withCrc(QByteArray::fromHex("0103020007")));
    };
    session->write({bits("R_bit", 160), {1}}, outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(session->doubts(), 1);
    EXPECT_THAT(outcomes.at(1), HasSubstr("not sent any more: the other bits of the word"));
    // The next begins with a read of its own.
    sendReply = [this](const QByteArray& reply) { slave.send(reply); };
    session->write({bits("R_bit", 160), {1}}, outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(2), "accepted");
}

// What is refused here is that bit alone.
TEST_F(DoubtfulWrites, AWriteBehindABitThatIsNotWrittenGoesOut)
{
    watch(words("R_W", 20));
    int writes = 0;
    sendReply = [this, &writes](const QByteArray& reply) {
        if (reply.at(1) == 3 || reply.at(1) == 8 || ++writes > 1)
            slave.send(reply);
        else // it is not answered, but a read is once more
            slave.send(withCrc(QByteArray::fromHex("0103020007")));
    };
    session->write({bits("R_bit", 160), {1}}, outcome(1));
    session->write(wordWrite("R_W", 30, 5), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_THAT(outcomes.at(1), HasSubstr("not sent any more: the other bits of the word"));
    EXPECT_EQ(outcomes.at(2), "accepted");
    EXPECT_EQ(registers[addressOfR + 30], 5);
}

} // namespace

} // namespace dov417
