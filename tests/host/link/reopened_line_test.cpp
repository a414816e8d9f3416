// A line that is opened again while replies to the last one's requests may still come.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const readOf100 = "010300640001";
const char* const replyTo100 = "0103020064";

class ALineThatIsOpenedAgain : public ::testing::Test {
protected:
    // One request that is not answered, and the line is closed.
    void leaveOneOpen()
    {
        HandLine last;
        last.start();
        asked = last.now;
        last.askRead(readOf100, 1);
        last.pass(milliseconds(600));
        line.now = last.now + seconds(5);
        line.exchange->awaitLate(last.exchange->books());
    }
    HandLine line;
    Clock::time_point asked{};
};

TEST_F(ALineThatIsOpenedAgain, DatesALateReplyByTheRequestThatItAnswers)
{
    leaveOneOpen();
    line.start();
    line.askRead(readOf100, 1);
    line.pass(milliseconds(510));
    line.askRead(readOf100, 1);
    ASSERT_EQ(line.sent.size(), 1U) << "it is listened to first";
    line.comeWhole(replyTo100);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
    EXPECT_EQ(line.ended->asOf, asked) << "nothing newer is known";
}

} // namespace

} // namespace dov417
