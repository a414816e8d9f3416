// What a port makes of bytes that were sent at another speed than its own.
#ifndef DOV417_SIMULATOR_OTHER_SPEED_H
#define DOV417_SIMULATOR_OTHER_SPEED_H

#include <QByteArray>

#include "line/serial_format.h"

namespace dov417::simulator {

// The bytes that come out where `own` listens to what was sent without a pause in `sent`. As a
// serial chip does it: from the edge of a start bit on, each bit is looked at once, in the middle
// of its time. A byte without a stop bit is handed on too.
QByteArray heardAs(const SerialFormat& own, const QByteArray& bytes, const SerialFormat& sent);

} // namespace dov417::simulator

#endif
