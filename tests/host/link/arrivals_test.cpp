// Many frames that are handed in at once, as by a peer at the far end of a network.
#include <gtest/gtest.h>

#include <QThread>
#include <memory>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

constexpr int frames = 10000;
constexpr unsigned stackSize = 512 * 1024; // what one frame of the stack for each would not fit in

// Each may be the reply to another program, as the station is listened to and not known yet.
TEST(ManyFramesAtOnce, AreTakenOneAfterTheOther)
{
    HandLine line;
    line.settings.isShared = true;
    line.settings.mayMark = false;
    line.start();
    line.askRead(readOf100, 1);
    ASSERT_EQ(line.sent.size(), 1U) << "the marker";
    line.pass(milliseconds(600));
    ASSERT_EQ(line.sent.size(), 1U) << "it is listened to";
    const QByteArray came = withCrc(QByteArray::fromHex("0103020007")).repeated(frames);
    const std::unique_ptr<QThread> thread(
        QThread::create([&]() { line.exchange->bytesCame(came, line.now); }));
    thread->setStackSize(stackSize);
    thread->start();
    thread->wait();
    EXPECT_EQ(line.strays.size(), static_cast<std::size_t>(frames));
    EXPECT_FALSE(line.ended.has_value());
}

} // namespace

} // namespace dov417
