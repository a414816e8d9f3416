#include "cache/write_queue.h"

#include <algorithm>
#include <cstring>

#include "debug_line.h"
#include "driver_lock.h"
#include "planning/pieces.h"
#include "planning/request_queue.h"
#include "protocol.h"
#include "protocol/frame_building.h"
#include "protocol/wrap.h"
#include "shortcuts.h"

namespace {

bool holdsBits(const RegisterType& type)
{
    return type.dataBits == 1;
}

// In the host's buffer: a byte a bit, two bytes a word.
int hostBytesPerUnit(const RegisterType& type)
{
    return holdsBits(type) ? 1 : 2;
}

// A host writes again and again and the queue is empty in between: nothing is allocated for that.
VARIABLE& placeWrite(int station, const QString& regName, int address, int length)
{
    QList<VARIABLE>& spare = driver.shortcuts->spareWrites;
    if (!driver.writeList.isEmpty() || spare.isEmpty()) {
        return placeInQueue(driver.writeList, station, regName, address, length);
    }
    driver.writeList.swap(spare);
    return startRequest(driver.writeList[0], station, regName, address, length);
}

} // namespace

int maxWriteLength(const RegisterType& type)
{
    return recordDataSize / hostBytesPerUnit(type);
}

void queueWrite(const RegisterType& type, int station, int address, int length,
                const unsigned char* data, int kind)
{
    const bool bits = holdsBits(type);
    const size_t bytesPerUnit = static_cast<size_t>(hostBytesPerUnit(type));
    const int limit = bits ? pieceLimit(bitValues) : std::min<int>(pieceLimit(0), maxFrameWords);
    int shortened = 0;
    int done = 0;
    do {
        const int units = std::min(limit, length - done);
        int pieceAddress = wrapAdd(address, done);
        int pieceLength = units;
        if (!bits) {
            rescalePiece(pieceAddress, pieceLength, type, shortened);
        }
        debugQueuedWrite(station, type.name, pieceAddress, pieceLength);
        VARIABLE& request = placeWrite(station, type.name, pieceAddress, pieceLength);
        request.kind = kind;
        if (units > 0) {
            memcpy(request.data, data + static_cast<size_t>(done) * bytesPerUnit,
                   static_cast<size_t>(units) * bytesPerUnit);
        }
        done += units;
    } while (done < length);
}

void rescalePiece(int& address, int& length, const RegisterType& type, int& shortened)
{
    const int rescaled = type.unitBits > 0 ? length * 16 / type.unitBits : length;
    address = wrapSub(address, shortened);
    shortened = wrapAdd(shortened, wrapSub(length, rescaled));
    length = rescaled;
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
            QList<VARIABLE>& spare = driver.shortcuts->spareWrites;
            if (driver.writeList.size() == 1 && spare.isEmpty()) {
                driver.writeList.swap(spare);
            } else {
                driver.writeList.removeFirst();
            }
        }
    }
}
