// Single reads on demand.
#ifndef DOV417MODBUS_CONDITION_READS_H
#define DOV417MODBUS_CONDITION_READS_H

#include "records.h"
#include "register_table.h"

// The last slot that is refilled once the condition or the write list is full.
enum { queueLimit = 512 };

// One piece of a condition read as a request.
VARIABLE conditionRequest(const KEY_ADDRESS& piece, const RegisterType& type, int kind);

#endif
