// The lines on the debug message stream.
#ifndef DOV417MODBUS_DEBUG_LINE_H
#define DOV417MODBUS_DEBUG_LINE_H

#include "records.h"

// "step:id=0,reg=R_W,address=10,len=5", its quotes included; `label` is what stands before the
// colon.
void debugKey(const char* label, int index, const QString& regName, int address, int length);

// "step3:id=0,std=1,reg=R_W,address=10,len=5", its quotes included.
void debugRequest(int index, const VARIABLE& request);

// addVarToList 1 "R_W" 10 5
void debugQueuedWrite(int station, const QString& regName, int address, int length);

#endif
