// The cache: finding a unit, marking what the host watches, storing what the host wrote.
#ifndef DOV417MODBUS_DATA_AREAS_H
#define DOV417MODBUS_DATA_AREAS_H

#include <QList>
#include <QString>

#include "records.h"
#include "register_table.h"

// Index of the unit's record, created at the end of the list if it is missing.
int getIndexOfDataArea(int station, QString area, int address, QList<_DATA_>& list);

// Marks the views that a host address covers. -1 for an unknown register name, else 0.
int _setDataAreaMonitorFlag(int station, QString regName, int address, int length);

// Stores a host write as pending and announces what it changes.
void write_saveDataToArea(int station, QString regName, int address, int length,
                          unsigned char* data);

int _setBitValue(int value, int bit, int on);

// The same for any row of a register table.
void markViews(const RegisterType& type, int station, int address, int length);
void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data);

#endif
