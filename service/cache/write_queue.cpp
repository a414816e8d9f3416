#include "cache/write_queue.h"

#include <cstring>

#include "debug_line.h"
#include "driver_lock.h"
#include "planning/pieces.h"
#include "planning/request_queue.h"
#include "protocol.h"
#include "protocol/frame_building.h"
#include "protocol/wrap.h"

namespace {

bool isBitRegister(const RegisterType& type)
{
    return type.dataBits == 1;
}

// In the host's buffer: a byte a bit, two bytes a word.
int hostBytesPerUnit(const RegisterType& type)
{
    return isBitRegister(type) ? 1 : 2;
}

VARIABLE requestOf(const KEY_ADDRESS& piece, int kind, int bytes)
{
    VARIABLE request = VARIABLE();
    request.kind = kind;
    request.stationNo = piece.stationNo;
    request.regName = piece.regName;
    request.address = piece.address;
    request.length = piece.length;
    if (bytes > 0) {
        memcpy(request.data, piece.data, static_cast<size_t>(bytes));
    }
    return request;
}

} // namespace

int maxWriteLength(const RegisterType& type)
{
    return recordDataSize / hostBytesPerUnit(type);
}

void queueWrite(const RegisterType& type, int station, int address, int length,
                const unsigned char* data, int kind)
{
    const bool bits = isBitRegister(type);
    const int bytesPerUnit = hostBytesPerUnit(type);
    KEY_ADDRESS whole = KEY_ADDRESS();
    whole.stationNo = station;
    whole.regName = type.name;
    whole.address = address;
    whole.length = length;
    whole.bitFlag = bits ? -1 : 0;
    if (length > 0) {
        memcpy(whole.data, data, static_cast<size_t>(length) * static_cast<size_t>(bytesPerUnit));
    }
    const int limit = pieceLimit(whole.bitFlag);
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, bits || limit < maxFrameWords ? limit : static_cast<int>(maxFrameWords),
                pieces, 1);
    int shortened = 0;
    for (int i = 0; i < pieces.size(); ++i) {
        KEY_ADDRESS& piece = pieces[i];
        const int pieceBytes = piece.length * bytesPerUnit;
        if (!bits) {
            rescalePiece(piece, type, shortened);
        }
        debugQueuedWrite(piece.stationNo, piece.regName, piece.address, piece.length);
        queueRequest(driver.writeList, requestOf(piece, kind, pieceBytes));
    }
}

void rescalePiece(KEY_ADDRESS& piece, const RegisterType& type, int& shortened)
{
    const int length = type.unitBits > 0 ? piece.length * 16 / type.unitBits : piece.length;
    piece.address = wrapSub(piece.address, shortened);
    shortened = wrapAdd(shortened, wrapSub(piece.length, length));
    piece.length = length;
}

int equalWritesQueued(int station, const QString& regName, int address, int length)
{
    const SharedMutex shared(&driver.mutex);
    int count = 0;
    for (int i = 0; i < driver.writeList.size(); ++i) {
        const VARIABLE& queued = driver.writeList.at(i);
        if (queued.address == address && queued.length == length && queued.stationNo == station &&
            queued.regName == regName) {
            ++count;
        }
    }
    return count;
}

void dropHeadWrite()
{
    if (!driver.writeList.isEmpty()) {
        const Unfinished end(Unfinished::endOfRequest);
        const SharedMutex shared(&driver.mutex);
        if (shared.stillMeant() && !driver.writeList.isEmpty()) {
            driver.writeList.removeFirst();
        }
    }
}
