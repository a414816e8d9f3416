#include "planning/condition_reads.h"

#include <algorithm>
#include <cstring>

#include "driver_lock.h"
#include "intf.h"
#include "planning/pieces.h"
#include "planning/request_queue.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/wrap.h"

namespace {

// The pieces that a key is cut into, made one by one: a key of 65536 units may have as many of
// them, with a kilobyte each.
struct Pieces {
    Pieces(const KEY_ADDRESS& whole, const RegisterType& registerType, int requestKind)
        : key(whole), type(registerType), kind(requestKind), limit(pieceLimit(whole.bitFlag)),
          count(whole.length > limit ? (whole.length - 1) / limit + 1 : 1)
    {
    }

    VARIABLE at(int i) const
    {
        const int length = count == 1 ? key.length : std::min(limit, key.length - i * limit);
        const Run piece = {key.stationNo, key.regName, wrapAdd(key.address, wrapMul(i, limit)),
                           length, i};
        return conditionRequest(piece, type, kind);
    }

    const KEY_ADDRESS& key;
    const RegisterType& type;
    int kind;
    int limit;
    int count;
};

// Is one of the pieces from `first` on this very request? Its address names the few addresses that
// the piece can have begun at.
bool anyPieceIs(const Pieces& pieces, int first, const VARIABLE& request)
{
    const int unit = pieces.type.bitNamed ? pieces.type.unitBits : 1;
    for (int offset = 1 - unit; offset < unit; ++offset) {
        const int start = wrapAdd(wrapMul(request.address, unit), offset);
        const unsigned int distance = static_cast<unsigned int>(wrapSub(start, pieces.key.address));
        const unsigned int limit = static_cast<unsigned int>(pieces.limit);
        const unsigned int i = distance / limit;
        if (distance % limit == 0 && i >= static_cast<unsigned int>(first) &&
            i < static_cast<unsigned int>(pieces.count) &&
            sameTarget(pieces.at(static_cast<int>(i)), request)) {
            return true;
        }
    }
    return false;
}

// The entry that queueing would renew, not counting the last slot, which each further piece
// overwrites.
int lastFixedEntryLike(const VARIABLE& request)
{
    for (int i = static_cast<int>(driver.conditionList.size()) - 1; i >= 1; --i) {
        if (i != queueLimit && sameTarget(driver.conditionList.at(i), request)) {
            return i;
        }
    }
    return -1;
}

// The list is full and its last slot holds a piece of this key: from here on a piece either renews
// the entry like it or takes the last slot, so only the last one of those counts. Queueing each
// would end in the same list, after as many searches as the key has pieces.
void queueRemaining(const Pieces& pieces, int first)
{
    QList<VARIABLE>& queue = driver.conditionList;
    for (int i = static_cast<int>(queue.size()) - 1; i >= 1; --i) {
        VARIABLE entry = queue.at(i);
        if (lastFixedEntryLike(entry) == i && anyPieceIs(pieces, first, entry)) {
            entry.kind = pieces.kind;
            memset(entry.data, 0, sizeof(entry.data));
            queue[i] = entry;
        }
    }
    for (int i = pieces.count - 1; i >= first; --i) {
        const VARIABLE piece = pieces.at(i);
        if (lastFixedEntryLike(piece) < 0) {
            queue[queueLimit] = piece;
            return;
        }
    }
}

} // namespace

VARIABLE conditionRequest(const Run& piece, const RegisterType& type, int kind)
{
    VARIABLE request = VARIABLE();
    request.kind = kind;
    request.stationNo = piece.stationNo;
    request.regName = piece.regName;
    request.address = piece.address;
    request.length = piece.length;
    const int unit = type.unitBits;
    if (unit < 1) {
        return request;
    }
    if (type.bitNamed) {
        // The area letter alone is no register type: the request is listed and never framed.
        const int length = wrapAdd(piece.length, piece.address % unit);
        request.regName = areaOf(piece.regName);
        request.address = piece.address / unit;
        request.length = length / unit + (length % unit != 0 ? 1 : 0);
    } else {
        request.length = wrapMul(piece.length, 16 / unit);
    }
    return request;
}

int intf_addConditionRead(KEY_ADDRESS& key, int kind)
{
    const DriverCall call;
    const int index = indexOfName(key.regName);
    if (index < 0) {
        return -1;
    }
    const Pieces pieces(key, registerType(index), kind);
    for (int i = 0; i < pieces.count; ++i) {
        const VARIABLE piece = pieces.at(i);
        const bool full = driver.conditionList.size() > queueLimit;
        queueRequest(driver.conditionList, piece);
        if (full && lastFixedEntryLike(piece) < 0) {
            queueRemaining(pieces, i + 1);
            break;
        }
    }
    driver.lastConditionVar = pieces.at(pieces.count - 1);
    return 1;
}
