// What the host wrote and the controller has not confirmed: stored, counted, and settled.
#ifndef DOV417MODBUS_PENDING_VALUES_H
#define DOV417MODBUS_PENDING_VALUES_H

#include "cache/unit_widths.h"
#include "protocol.h"

// Store the values of a write as pending, each unit after its change was announced: a callback that
// reads back from within still sees the value that is about to go. They end where the host takes
// the unit away while it is told.
void storeWords(const HostRange& write, const unsigned char* data);
void storeWordsOverBytes(const HostRange& write, const unsigned char* data);
void storeDwordsOverWords(const HostRange& write, const unsigned char* data);
void storeDwordUnits(const HostRange& write, const unsigned char* data);
void storeSingleUnits(const HostRange& write, const unsigned char* data);
void storeBitsOfWords(const HostRange& write, const unsigned char* data);
void storeBitsOfBytes(const HostRange& write, const unsigned char* data);

// Announces a unit of a write that failed; `address` is the unit's.
void wordFailed(const HostRange& write, int index, int address);
void dwordFailed(const HostRange& write, int index, int address);
void byteFailed(const HostRange& write, int index, int address);
void viewFailed(const HostRange& write, int index, int address);

// Settle the units of a queued write once it is answered or given up. Accepted: the written bytes
// are the controller's own now. Failed: the controller's are visible again and announced. They end
// where a callback re-initialises the driver.
void settleUnits(const HostRange& write, const Settling& settling, bool accepted);
void settleBitsOfWords(const HostRange& write, const Settling& settling, bool accepted);
void settleBitsOfBytes(const HostRange& write, const Settling& settling, bool accepted);

// The controller's value arrived: with no write on its way it is the visible one again.
inline void showDeviceValue(_DATA_& unit)
{
    if (driver.writeList.isEmpty()) {
        unit.writePending = 0;
    }
}

// No bit write counts as under way.
inline void forgetBitWrites(_DATA_& unit)
{
    unit.pendingBits = 0;
}

#endif
