// Long writes and condition reads are cut into pieces that one frame carries.
#ifndef DOV417MODBUS_PIECES_H
#define DOV417MODBUS_PIECES_H

#include <QList>

#include "records.h"

enum {
    unlimitedPieceWords = 123, // one write of the Modbus protocol, where the host sets no limit
    unlimitedPieceBits = 984
};

// KEY_ADDRESS::bitFlag of a key whose values are bits.
enum {
    bitValues = -1
};

// The host's limit for one piece, or that of the Modbus protocol where it set none.
int pieceLimit(int bitFlag);

// Cuts a key into pieces of at most maxLen units, appended to `out`; below 1: the Modbus protocol's
// limit. With `withData` 1 each piece has its part of the key's values, else all of them.
void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData);

#endif
