#include "line/wake_timer.h"

#include <QCoreApplication>
#include <gtest/gtest.h>
#include <unistd.h>

namespace dov417 {

namespace {

// The descriptor that the next file gets: the lowest that is free.
int nextDescriptor()
{
    const int next = dup(STDERR_FILENO);
    close(next);
    return next;
}

class AWakeTimer : public ::testing::Test {
protected:
    AWakeTimer() : application_(argc_, nullptr)
    {
        const WakeTimer first([]() {}); // what Qt opens for a thread is open from here on
    }
    ~AWakeTimer() override
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private:
    int argc_ = 0;
    QCoreApplication application_;
};

// Each line that is opened makes one.
TEST_F(AWakeTimer, LeavesNothingOpenBehind)
{
    const int before = nextDescriptor();
    {
        const WakeTimer timer([]() {});
        EXPECT_TRUE(timer.isValid());
        EXPECT_NE(nextDescriptor(), before);
    }
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(AWakeTimer, IsOneAlsoInAProgramWithoutStandardInput)
{
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    {
        const WakeTimer timer([]() {});
        EXPECT_TRUE(timer.isValid());
        EXPECT_NE(nextDescriptor(), STDIN_FILENO) << "it is the timer's";
    }
    EXPECT_EQ(nextDescriptor(), STDIN_FILENO);
    dup2(input, STDIN_FILENO);
    close(input);
}

} // namespace

} // namespace dov417
