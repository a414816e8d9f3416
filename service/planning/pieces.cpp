#include "planning/pieces.h"

#include <algorithm>
#include <cstring>

#include "protocol.h"
#include "protocol/wrap.h"

int pieceLimit(int bitFlag)
{
    const int limit = bitFlag == bitValues ? driver.pieceBitLimit : driver.pieceWordLimit;
    if (limit >= 1) {
        return limit;
    }
    return bitFlag == bitValues ? unlimitedPieceBits : unlimitedPieceWords;
}

void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData)
{
    const bool bits = key.bitFlag == bitValues;
    if (maxLen < 1) {
        maxLen = bits ? unlimitedPieceBits : unlimitedPieceWords;
    }
    if (key.length <= maxLen) {
        out.append(key);
        return;
    }
    const long long size = bits ? 1 : 2;
    for (long long done = 0; done < key.length; done += maxLen) {
        KEY_ADDRESS piece = key;
        piece.address = wrapAdd(key.address, static_cast<int>(done));
        piece.length = static_cast<int>(std::min<long long>(maxLen, key.length - done));
        if (withData == 1) {
            // No more than the whole key's buffer holds behind this piece's place.
            const long long from = std::min<long long>(size * done, recordDataSize);
            const long long bytes = std::min(size * piece.length, recordDataSize - from);
            memcpy(piece.data, key.data + from, static_cast<size_t>(bytes));
        }
        out.append(piece);
    }
}
