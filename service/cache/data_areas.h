// What is done to the cached units of a register type: watch, read, store a write, settle it.
#ifndef DOV417MODBUS_DATA_AREAS_H
#define DOV417MODBUS_DATA_AREAS_H

#include <QString>

#include "protocol/register_table.h"

// Marks the views that a host address covers. -1 for an unknown register name, else 0.
int _setDataAreaMonitorFlag(int station, QString regName, int address, int length);

// Nothing is watched any more, and no bit write counts as under way.
void clearMarks();

// Settles the units of one queued write: result 1 accepted by the controller, else failed.
void _write_FailOrSuc(int station, QString regName, int address, int length, int result);

// The same for any row of a register table, and reading and storing: a write is pending from then
// on, and what it changes is announced. A length below 1 covers nothing.
void markViews(const RegisterType& type, int station, int address, int length);
void readUnits(const RegisterType& type, int station, int address, int length, unsigned char* out);
void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data);
void settleWrite(const RegisterType& type, int station, const QString& regName, int address,
                 int length, bool accepted);

#endif
