#include "line/terminal_speed.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace dov417 {

namespace {

// A simulated controller that cannot tell the speed of the other side takes it for its own.
TEST(TerminalSpeed, OfWhatIsNoTerminalIsNone)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(terminalSpeed(ends[0]), 0);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(terminalSpeed(-1), 0);
}

} // namespace

} // namespace dov417
