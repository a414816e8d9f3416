// The queues of writes and of condition reads: the same rules for both.
#ifndef DOV417MODBUS_REQUEST_QUEUE_H
#define DOV417MODBUS_REQUEST_QUEUE_H

#include <QList>

#include "records.h"

// The last slot that is refilled once a queue holds more than so many requests.
enum {
    queueLimit = 512
};

bool sameTarget(const VARIABLE& a, const VARIABLE& b);

// A record for a request of this target, its values zeroed.
VARIABLE& startRequest(VARIABLE& record, int station, const QString& regName, int address,
                       int length);

// The queue's record for a request of this target, its values zeroed, to be filled there: that of
// an equal request, from the end; never the head, which may be on the line. A full queue gives up
// its last slot rather than growing; else a record is appended.
VARIABLE& placeInQueue(QList<VARIABLE>& queue, int station, const QString& regName, int address,
                       int length);

// Queues a copy of a request there.
void queueRequest(QList<VARIABLE>& queue, const VARIABLE& request);

#endif
