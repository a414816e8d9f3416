#include "planning/pieces.h"

#include "protocol.h"

int pieceLimit(int bitFlag)
{
    const int limit = bitFlag == bitValues ? driver.pieceBitLimit : driver.pieceWordLimit;
    if (limit >= 1) {
        return limit;
    }
    return bitFlag == bitValues ? unlimitedPieceBits : unlimitedPieceWords;
}
