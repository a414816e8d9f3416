// Functions that nothing in this driver calls: of its inner interface, not exported, kept under
// their names and with their arguments. What the driver uses in their place stands with each.
#ifndef DOV417MODBUS_UNCALLED_FUNCTIONS_H
#define DOV417MODBUS_UNCALLED_FUNCTIONS_H

#include <QByteArray>

// Two hexadecimal characters to a byte. Frames are binary: none is read so.
unsigned char asc2hex(QByteArray text, int position);

#endif
