// Assignment of the two large records with one block copy of the kilobyte that each carries.
#ifndef DOV417MODBUS_RECORD_COPY_H
#define DOV417MODBUS_RECORD_COPY_H

#include <cstring>

#include "records.h"

// All but the values.
inline void assignTarget(VARIABLE& to, const VARIABLE& from)
{
    to.kind = from.kind;
    to.stationNo = from.stationNo;
    if (!to.regName.isSharedWith(from.regName)) {
        to.regName = from.regName;
    }
    to.address = from.address;
    to.length = from.length;
}

inline void assignRequest(VARIABLE& to, const VARIABLE& from)
{
    if (&to == &from) {
        return;
    }
    assignTarget(to, from);
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
