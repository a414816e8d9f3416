// The queues of writes and of condition reads: the same rules for both.
#ifndef DOV417MODBUS_REQUEST_QUEUE_H
#define DOV417MODBUS_REQUEST_QUEUE_H

#include <QList>

#include "records.h"

// A queue holds at most queueLimit + 1 requests: the next one replaces that at index queueLimit.
enum {
    queueLimit = 512
};

bool sameTarget(const VARIABLE& a, const VARIABLE& b);

// A record for a request of this target, its values zeroed.
VARIABLE& startRequest(VARIABLE& record, int station, const QString& regName, int address,
                       int length);

// The queue's record for a request of this target, its values zeroed, to be filled there: the last
// request of the same target but the head, which may be on the line; the last slot of a full queue;
// else an appended one.
VARIABLE& placeInQueue(QList<VARIABLE>& queue, int station, const QString& regName, int address,
                       int length);

// Queues a copy of a request there.
void queueRequest(QList<VARIABLE>& queue, const VARIABLE& request);

#endif
