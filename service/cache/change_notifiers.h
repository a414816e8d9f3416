// Which of the host's views a changed unit touches, and the call for each.
#ifndef DOV417MODBUS_CHANGE_NOTIFIERS_H
#define DOV417MODBUS_CHANGE_NOTIFIERS_H

#include <QString>

// A null value means that every watched bit is announced. `index` is the record's index in
// driver.dataAreas, `timerCounter` field 6 of the register type.
void _wordDataChange(int* oldValue, int* newValue, int index, int timerCounter);
void _dwordDataChange(int* oldValue, int* newValue, int index, int timerCounter);
void _byteDataChange(unsigned char* oldValue, unsigned char* newValue, int index, int timerCounter);
void _bitDataChange(int index);

// Calls the host, if it installed a callback, with a copy of the name that it may keep. False when
// the host re-initialised the driver from within: whatever was under way is void then.
bool callHost(int tag, int station, QString regName, int address);

#endif
