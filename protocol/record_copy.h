// Assignment of the two large records with one block copy of the kilobyte that each carries. Every
// poll of a new request makes four of them.
#ifndef DOV417MODBUS_RECORD_COPY_H
#define DOV417MODBUS_RECORD_COPY_H

#include <cstring>

#include "records.h"

inline void assignRequest(VARIABLE& to, const VARIABLE& from)
{
    if (&to == &from) {
        return;
    }
    to.kind = from.kind;
    to.stationNo = from.stationNo;
    if (!to.regName.isSharedWith(from.regName)) {
        to.regName = from.regName;
    }
    to.address = from.address;
    to.length = from.length;
    memcpy(to.data, from.data, sizeof(to.data));
}

inline void assignFrame(FRAME_PRO& to, const FRAME_PRO& from)
{
    if (&to == &from) {
        return;
    }
    memcpy(to.frame, from.frame, sizeof(to.frame));
    to.sendLength = from.sendLength;
    to.replyLength = from.replyLength;
    to.dataPosition = from.dataPosition;
    to.dataCount = from.dataCount;
    to.spare = from.spare;
    assignRequest(to.request, from.request);
}

#endif
