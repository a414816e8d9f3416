#include "live/order_channel.h"

#include <gmock/gmock.h>
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

} // namespace

} // namespace dov417
