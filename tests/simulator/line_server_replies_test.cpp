// What becomes of replies on their way out: faults, and the pace of a line.
#include "line_server_world.h"

#include <string>

#include "line/wake_timer.h"

namespace dov417::simulator {
namespace {

using LineServerReplies = LineServerTest;

TEST_F(LineServerReplies, LogsRequestsRepliesAndWhatHappenedToThem)
{
    start("flip=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    master.receive(7);
    master.send(bytesOf("01 03 14 A0 00 01 81 D8"));
    master.receive(5);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 2));
    std::vector<std::string> meanings;
    for (const LineEvent& event : events) {
        if (event.kind != LineEvent::notice)
            meanings.push_back(event.meaning);
    }
    EXPECT_EQ(meanings, (std::vector<std::string>{
                            "station 1 reads register 1290", "reply",
                            "station 1 reads register 5280: exception 2, illegal data address",
                            "reply: exception 2, illegal data address [flip]"}));
    LineEvent event;
    event.kind = LineEvent::received;
    event.timeNs = 12345678;
    event.bytes = bytesOf(readRequest);
    event.meaning = "meaning";
    EXPECT_EQ(logText(event), "    0.012346 <- 01 03 05 0A 00 01 A4 C4  meaning");
    const auto parsed = parseLogText(logText(event));
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->kind, event.kind);
    EXPECT_EQ(parsed->timeNs, 12346000);
    EXPECT_EQ(parsed->bytes, event.bytes);
    EXPECT_EQ(parsed->meaning, event.meaning);
    EXPECT_FALSE(parseLogText("    0.012346 <- 01 0Z  meaning"));
    EXPECT_FALSE(parseLogText("    0.012346 -> no bytes"));
    EXPECT_FALSE(parseLogText("0.012346 == 01 03"));
    EXPECT_EQ(parseLogText("999999999.999999 <- 01 03")->timeNs, 999999999999999000);
    EXPECT_FALSE(parseLogText("9999999999.000000 <- 01 03")); // 64 bits of ns end before
    EXPECT_FALSE(parseLogText("999999999999.000000 <- 01 03"));
}

TEST_F(LineServerReplies, WithholdsASilencedReplyAndGoesOn)
{
    start("silence=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    master.send(bytesOf(writeRequest));
    ASSERT_TRUE(waitForEvents(LineEvent::withheld, 1));
    EXPECT_EQ(memory.station(1)->word(Area::R, 11), 7); // executed all the same
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerReplies, EchoesTheRequestBeforeTheReply)
{
    start("echo=every:1");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readRequest) + " " + readReply);
}

TEST_F(LineServerReplies, SendsALateReplyLateAndThoseOfLaterRequestsBehindIt)
{
    start("late:50=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    master.send(bytesOf(writeRequest) + bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(writeRequest) + " " + readReply);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 3));
    std::int64_t executed = 0;
    std::int64_t sent = 0;
    for (const LineEvent& event : events) {
        if (event.kind == LineEvent::received && hexOf(event.bytes) == writeRequest)
            executed = event.timeNs;
        if (event.kind == LineEvent::sent && hexOf(event.bytes) == writeRequest)
            sent = event.timeNs;
    }
    EXPECT_GE(sent - executed, 45000000); // never early
}

TEST_F(LineServerReplies, SendsASlowReplyWhole)
{
    start("slow:2=every:1");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    EXPECT_EQ(server->counters().replies, 1U);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 1));
    EXPECT_EQ(hexOf(events.back().bytes), readReply);
}

TEST_F(LineServerReplies, PacedNeverIsFasterThanTheLine)
{
    options.paced = true;
    options.line.baudRate = 9600;
    options.responseTimeMs = 3;
    start();
    MasterEnd master(server->portName());
    const std::int64_t begin = monotonicNow();
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    // 8 + 7 characters of 1.1458 ms, an inter-frame delay of 4.0104 ms, 3 ms of response time.
    EXPECT_GE(monotonicNow() - begin, 24197917);
}

TEST_F(LineServerReplies, PacedKeepsARequestThatTakesLongerThanTheSilence)
{
    options.paced = true;
    options.line.baudRate = 300;
    options.minSilenceMs = 0; // 128 ms of the line
    start();
    MasterEnd master(server->portName());
    // The first 9 characters take 330 ms, the other 12 follow for 440 ms: when the second request
    // has begun, its end is on its way.
    const QByteArray second = bytesOf("01 10 05 0A 00 02 04 00 0A 01 02 EC D3");
    master.send(bytesOf(readRequest) + second.left(1));
    ASSERT_TRUE(waitFor([&]() { return server->counters().bytesReceived == 9; }));
    master.send(second.mid(1));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readReply) + " 01 10 05 0A 00 02 61 06");
    EXPECT_EQ(server->counters().dropped, 0U);
}

TEST_F(LineServerReplies, PacedKeepsARequestWhoseEndBeganInTime)
{
    options.paced = true;
    options.line.baudRate = 300;
    options.minSilenceMs = 400;
    start();
    MasterEnd master(server->portName());
    // The beginning has arrived when the first request is served; the end then takes 440 ms.
    const QByteArray second = bytesOf("01 10 05 0A 00 02 04 00 0A 01 02 EC D3");
    master.send(bytesOf(readRequest) + second.left(1));
    ASSERT_TRUE(waitForEvents(LineEvent::received, 1));
    master.send(second.mid(1));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readReply) + " 01 10 05 0A 00 02 61 06");
    EXPECT_EQ(server->counters().dropped, 0U);
}

TEST_F(LineServerReplies, PacedSendsEveryKindOfFaultyReply)
{
    options.paced = true;
    start("any=every:1");
    MasterEnd master(server->portName());
    for (std::size_t i = 1; i <= 40; ++i) {
        master.send(bytesOf(readRequest));
        ASSERT_TRUE(waitFor(
            [&]() { return countOf(LineEvent::sent) + countOf(LineEvent::withheld) == i; }));
        master.readNow();
    }
    EXPECT_EQ(server->counters().requests, 40U);
    EXPECT_EQ(faults.faulty(), 40U);
}

} // namespace
} // namespace dov417::simulator
