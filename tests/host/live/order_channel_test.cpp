#include "live/order_channel.h"

#include <QSocketNotifier>
#include <gmock/gmock.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "pty_slave.h"

namespace dov417 {

namespace {

using testing::ElementsAre;

class AnOrderChannel : public ::testing::Test {
protected:
    AnOrderChannel()
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        other = ends[1];
        channel = std::make_unique<OrderChannel>(
            ends[0], [this](const std::string& line) { lines.push_back(line); });
    }
    ~AnOrderChannel() override
    {
        if (other >= 0)
            close(other);
    }
    void send(const std::string& text) const
    {
        ASSERT_EQ(write(other, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool waitForLines(std::size_t count)
    {
        return waitUntil([this, count]() { return lines.size() >= count; });
    }

    int other = -1;
    std::unique_ptr<OrderChannel> channel;
    std::vector<std::string> lines;
};

TEST_F(AnOrderChannel, TellsEachLineHoweverItsBytesCome)
{
    send("one\ntw");
    ASSERT_TRUE(waitForLines(1));
    send("o\n\nthree\nfo");
    ASSERT_TRUE(waitForLines(4));
    EXPECT_THAT(lines, ElementsAre("one", "two", "", "three"));
}

TEST_F(AnOrderChannel, KeepsNoMoreOfALineThanItsMaximum)
{
    const std::string rest(3 * OrderChannel::maxLine, 'x');
    send(rest + "\nshort\n");
    ASSERT_TRUE(waitForLines(2));
    EXPECT_EQ(lines.at(0), std::string(OrderChannel::maxLine, 'x'));
    EXPECT_EQ(lines.at(1), "short");
}

TEST_F(AnOrderChannel, SaysLinesToTheOtherSide)
{
    EXPECT_TRUE(channel->say("an order"));
    char bytes[32] = {};
    EXPECT_EQ(read(other, bytes, sizeof bytes), 9);
    EXPECT_STREQ(bytes, "an order\n");
}

TEST_F(AnOrderChannel, DoesNotWaitForASideThatReadsNothing)
{
    const std::string line(OrderChannel::maxLine, 'x');
    int said = 0;
    while (channel->say(line) && said < 100000)
        ++said;
    EXPECT_LT(said, 100000);
}

TEST_F(AnOrderChannel, EndsNothingWhenTheOtherSideIsGone)
{
    close(other);
    other = -1;
    EXPECT_FALSE(channel->say("nobody hears it"));
}

// Somebody else has read what it was woken for.
TEST(AnOrderChannelThatIsWokenForNothing, HearsTheNextOrder)
{
    int thefts = 0;
    for (const bool isThiefFirst : {true, false}) {
        int ends[2] = {-1, -1};
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        const int copy = dup(ends[0]);
        bool isWoken = false;
        std::vector<std::string> lines;
        std::unique_ptr<QSocketNotifier> thief;
        std::unique_ptr<OrderChannel> channel;
        const auto makeThief = [&]() {
            thief = std::make_unique<QSocketNotifier>(copy, QSocketNotifier::Read);
            QObject::connect(thief.get(), &QSocketNotifier::activated, thief.get(), [&]() {
                char bytes[32] = {};
                thefts += recv(copy, bytes, sizeof bytes, MSG_DONTWAIT) > 0 ? 1 : 0;
                isWoken = true;
            });
        };
        if (isThiefFirst)
            makeThief();
        channel = std::make_unique<OrderChannel>(
            ends[0], [&lines](const std::string& line) { lines.push_back(line); });
        if (!isThiefFirst)
            makeThief();
        ASSERT_EQ(write(ends[1], "lost\n", 5), 5);
        ASSERT_TRUE(waitUntil([&]() { return isWoken; }));
        thief->setEnabled(false);
        ASSERT_EQ(write(ends[1], "heard\n", 6), 6);
        ASSERT_TRUE(waitUntil([&]() { return !lines.empty() && lines.back() == "heard"; }));
        close(copy);
        close(ends[1]);
    }
    EXPECT_GT(thefts, 0);
}

} // namespace

} // namespace dov417
