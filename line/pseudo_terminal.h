// A pseudo-terminal stands in for a serial port, but has no wire.
#ifndef DOV417_LINE_PSEUDO_TERMINAL_H
#define DOV417_LINE_PSEUDO_TERMINAL_H

#include <QString>

namespace dov417 {

// There are no bits on it: its kernel side takes parity once and refuses it the next time.
bool isPseudoTerminal(const QString& device);

} // namespace dov417

#endif
