#include "planning/request_queue.h"

#include <cstring>

#include "protocol/record_copy.h"

namespace {

const VARIABLE blankRequest = VARIABLE();

bool isFor(const VARIABLE& request, int station, const QString& regName, int address, int length)
{
    return request.address == address && request.length == length && request.stationNo == station &&
           request.regName == regName;
}

VARIABLE& setTarget(VARIABLE& record, int station, const QString& regName, int address, int length)
{
    record.stationNo = station;
    record.regName = regName;
    record.address = address;
    record.length = length;
    return record;
}

} // namespace

bool sameTarget(const VARIABLE& a, const VARIABLE& b)
{
    return isFor(a, b.stationNo, b.regName, b.address, b.length);
}

VARIABLE& startRequest(VARIABLE& record, int station, const QString& regName, int address,
                       int length)
{
    memset(record.data, 0, sizeof(record.data));
    return setTarget(record, station, regName, address, length);
}

VARIABLE& placeInQueue(QList<VARIABLE>& queue, int station, const QString& regName, int address,
                       int length)
{
    const int size = static_cast<int>(queue.size());
    int at = size - 1;
    while (at >= 1 && !isFor(queue.at(at), station, regName, address, length)) {
        --at;
    }
    if (at < 1) {
        at = size > queueLimit ? static_cast<int>(queueLimit) : size;
    }
    if (at == size) {
        queue.append(blankRequest);
        return setTarget(queue[at], station, regName, address, length);
    }
    return startRequest(queue[at], station, regName, address, length);
}

void queueRequest(QList<VARIABLE>& queue, const VARIABLE& request)
{
    assignRequest(
        placeInQueue(queue, request.stationNo, request.regName, request.address, request.length),
        request);
}
