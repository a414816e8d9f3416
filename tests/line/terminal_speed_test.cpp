#include "line/terminal_speed.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace dov417 {

namespace {

TEST(TerminalSpeed, IsWhatTheOtherSideHasSet)
{
    const int line = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(line, 0);
    for (const auto& [named, speed] :
         {std::pair<speed_t, int>(B9600, 9600), std::pair<speed_t, int>(B38400, 38400)}) {
        termios settings{};
        ASSERT_EQ(tcgetattr(line, &settings), 0);
        cfsetspeed(&settings, named);
        ASSERT_EQ(tcsetattr(line, TCSANOW, &settings), 0);
        EXPECT_EQ(terminalSpeed(line), speed);
    }
    close(line);
}

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
