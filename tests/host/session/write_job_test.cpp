#include "session/write_job.h"

#include "session_world.h"

namespace dov417 {

namespace {

class WriteJobOnALine : public SessionOnALine {
protected:
    WriteJobOnALine()
    {
        beAController();
    }

    static WriteTask taskOf(const Address& address, const std::vector<unsigned char>& data)
    {
        WriteTask task;
        task.item = {"item", address, Format(), ""};
        task.data = data;
        return task;
    }

    std::vector<WriteTask> done(const std::vector<WriteTask>& tasks)
    {
        bool ended = false;
        WriteJob job(*session, [&]() { ended = true; });
        job.start(tasks);
        EXPECT_TRUE(waitUntil([&]() { return ended; }));
        return job.tasks();
    }
};

using Bytes = std::vector<unsigned char>;

TEST_F(WriteJobOnALine, EachWriteIsConfirmedByWhatItsOwnWordsHoldAfterwards)
{
    registers[0x0500 + 10] = 1;
    registers[0x0500 + 21] = 2;
    sendReply = [this](const QByteArray& bytes) {
        if (bytes.at(1) == 16)
            registers[0x0500 + 20] = 7; // the controller's own program
        slave.send(bytes);
    };
    const std::vector<WriteTask> tasks = done(
        {taskOf(words("R_W", 10, 2), {5, 0, 6, 0}), taskOf(words("R_W", 20, 2), {8, 0, 9, 0})});
    EXPECT_EQ(tasks.at(0).result, WriteResult::confirmed);
    EXPECT_EQ(tasks.at(0).before, (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(tasks.at(0).after, (Bytes{5, 0, 6, 0}));
    EXPECT_EQ(tasks.at(1).result, WriteResult::different);
    EXPECT_EQ(tasks.at(1).before, (Bytes{0, 0, 2, 0}));
    EXPECT_EQ(tasks.at(1).after, (Bytes{7, 0, 9, 0}));
}

TEST_F(WriteJobOnALine, WhatCannotBeReadIsNeverConfirmed)
{
    illegal = {0x0500 + 10};
    sendReply = [this](const QByteArray& bytes) {
        if (bytes.at(1) == 16)
            illegal.insert(0x0500 + 20);
        slave.send(bytes);
    };
    const std::vector<WriteTask> tasks = done(
        {taskOf(words("R_W", 10, 2), {5, 0, 6, 0}), taskOf(words("R_W", 20, 2), {8, 0, 9, 0})});
    EXPECT_EQ(tasks.at(0).result, WriteResult::refused);
    EXPECT_EQ(tasks.at(0).before, Bytes());
    EXPECT_NE(tasks.at(0).reason, "");
    EXPECT_EQ(tasks.at(1).result, WriteResult::unread);
    EXPECT_EQ(tasks.at(1).before, (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(tasks.at(1).after, Bytes());
    EXPECT_NE(tasks.at(1).reason, "");
}

TEST_F(WriteJobOnALine, AWriteOfSeveralRequestsSaysWhichOfThemWereTaken)
{
    // With the gap of these tests, 20, each request carries 20 words.
    illegal = {0x0500 + 45};
    const std::vector<WriteTask> tasks =
        done({taskOf(words("R_W", 0, 80), Bytes(160, 1)), taskOf(words("R_W", 200), {5, 0})});
    EXPECT_EQ(tasks.at(0).result, WriteResult::refused);
    EXPECT_EQ(tasks.at(0).reason, "exception 2 (illegal data address); 1/R_W:0..39 was taken; "
                                  "1/R_W:60..79 was taken");
    EXPECT_EQ(registers.at(0x0500 + 39), 0x0101);
    EXPECT_EQ(registers.count(0x0500 + 40), 0U) << "nor what was asked for with it";
    EXPECT_EQ(registers.at(0x0500 + 60), 0x0101);
    EXPECT_EQ(tasks.at(1).result, WriteResult::confirmed) << tasks.at(1).reason;
}

TEST_F(WriteJobOnALine, ABroadcastIsSentAndNobodyConfirmsIt)
{
    const std::vector<WriteTask> tasks = done({taskOf(words("R_W", 10, 2, 0), {5, 0, 6, 0})});
    EXPECT_EQ(tasks.at(0).result, WriteResult::sent);
    EXPECT_EQ(tasks.at(0).before, Bytes());
    EXPECT_EQ(tasks.at(0).after, Bytes());
}

} // namespace

} // namespace dov417
