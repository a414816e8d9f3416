#include "line/terminal_speed.h"

// The kernel's own record, as <termios.h> knows no speeds but those that have a name.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace dov417 {

int terminalSpeed(int descriptor)
{
    termios2 settings{};
    return ioctl(descriptor, TCGETS2, &settings) == 0 ? static_cast<int>(settings.c_ospeed) : 0;
}

} // namespace dov417
