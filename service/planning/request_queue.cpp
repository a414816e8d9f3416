#include "planning/request_queue.h"

bool sameTarget(const VARIABLE& a, const VARIABLE& b)
{
    return a.address == b.address && a.length == b.length && a.stationNo == b.stationNo &&
           a.regName == b.regName;
}

void queueRequest(QList<VARIABLE>& queue, const VARIABLE& request)
{
    const int size = static_cast<int>(queue.size());
    for (int i = size - 1; i >= 1; --i) {
        if (sameTarget(queue.at(i), request)) {
            queue[i] = request;
            return;
        }
    }
    if (size > queueLimit) {
        queue[queueLimit] = request;
    } else {
        queue.append(request);
    }
}
