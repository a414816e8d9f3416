// The speed that a terminal is set to. A pseudo-terminal has one too, though nothing goes by it.
#ifndef DOV417_LINE_TERMINAL_SPEED_H
#define DOV417_LINE_TERMINAL_SPEED_H

namespace dov417 {

// Bits a second, of either end of a pseudo-terminal; 0 where there is none to be had.
int terminalSpeed(int descriptor);

} // namespace dov417

#endif
