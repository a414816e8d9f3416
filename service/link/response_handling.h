// What came back: accept, retry or abandon.
#ifndef DOV417MODBUS_RESPONSE_HANDLING_H
#define DOV417MODBUS_RESPONSE_HANDLING_H

#include <QByteArray>
#include <QList>

#include "records.h"

// Decodes a good reply to the frame on the line. 0, always.
int dealReadFrameReturnSaveData(QByteArray reply);

// `count` values from `position` of the reply on, to where the current kind of request wants them:
// the cache, the host's recipe buffer too, or the write back that follows.
void decodeReply(const QByteArray& reply, int count, int position, const VARIABLE& request);

#endif
