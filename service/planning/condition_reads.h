// Single reads on demand.
#ifndef DOV417MODBUS_CONDITION_READS_H
#define DOV417MODBUS_CONDITION_READS_H

#include "planning/address_merging.h"
#include "protocol/register_table.h"
#include "records.h"

// One piece of a condition read as a request.
VARIABLE conditionRequest(const Run& piece, const RegisterType& type, int kind);

#endif
