// The host's writes: queue, and settle when the controller has answered.
#ifndef DOV417MODBUS_WRITING_VALUES_H
#define DOV417MODBUS_WRITING_VALUES_H

#include <QString>

#include "protocol/register_table.h"
#include "records.h"

// Settles the units of one queued write: result 1 accepted by the controller, else failed.
void _write_FailOrSuc(int station, QString regName, int address, int length, int result);

// The same for any row of a register table.
void settleWrite(const RegisterType& type, int station, const QString& regName, int address,
                 int length, bool accepted);

// A piece of a write in units of the controller: units of another width than 16 bits change the
// length, and move the address down by what the earlier pieces lost (`shortened`, updated).
void rescalePiece(KEY_ADDRESS& piece, const RegisterType& type, int& shortened);

#endif
