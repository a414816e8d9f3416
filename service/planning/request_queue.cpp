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

} // namespace

bool sameTarget(const VARIABLE& a, const VARIABLE& b)
{
    return isFor(a, b.stationNo, b.regName, b.address, b.length);
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
    } else {
        memset(queue[at].data, 0, sizeof(queue[at].data));
    }
    VARIABLE& place = queue[at];
    place.stationNo = station;
    place.regName = regName;
    place.address = address;
    place.length = length;
    return place;
}

void queueRequest(QList<VARIABLE>& queue, const VARIABLE& request)
{
    assignRequest(
        placeInQueue(queue, request.stationNo, request.regName, request.address, request.length),
        request);
}
