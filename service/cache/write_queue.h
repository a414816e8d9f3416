// The pending write list: what the host wrote and the controller has not answered yet.
#ifndef DOV417MODBUS_WRITE_QUEUE_H
#define DOV417MODBUS_WRITE_QUEUE_H

#include <QString>

#include "protocol/register_table.h"
#include "records.h"

// How many units one write of the host may have: what a key carries.
int maxWriteLength(const RegisterType& type);

// Cuts a write of 0 to maxWriteLength() units into requests and queues them.
void queueWrite(const RegisterType& type, int station, int address, int length,
                const unsigned char* data, int kind);

// A piece of a write in units of the controller: units of another width than 16 bits change the
// length, and move the address down by what the earlier pieces lost (`shortened`, updated).
void rescalePiece(int& address, int& length, const RegisterType& type, int& shortened);

// Counted under driver.mutex: the write on the line may be leaving the list.
int equalWritesQueued(int station, const QString& regName, int address, int length);

// The write at the head is answered or given up and leaves, under driver.mutex.
void dropHeadWrite();

#endif
