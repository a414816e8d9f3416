// The editor's questions about one address and about the register types.
#ifndef DOV417MODBUS_ADDRESS_CHECK_H
#define DOV417MODBUS_ADDRESS_CHECK_H

#include <QString>
#include <QStringList>

#include "intf.h"
#include "protocol/register_table.h"

// Does a run of `length` items from `address` lie within lowest..highest? An item takes
// unitBits / 16 of the address range; the sum is made in double precision and cannot overflow.
bool isWithinRange(int address, int length, int lowest, int highest, int unitBits);

// What the two checks of the interface ask.
struct AddressQuestion {
    QString regName;
    QString text;
    int length;
    bool isBit;
    bool withAccess; // the access and data type tests apply
    int dataType;
    int accessMode;
};

// The check against any row of a register table, first failing test first. `address` receives the
// number that the text converts to.
CheckCode checkAgainst(const AddressQuestion& asked, const RegisterType& type,
                       const QString (&row)[rangeFieldCount], int& address);

// Appends the five texts that describe any row of a register table.
void describe(const RegisterType& type, const QString (&row)[rangeFieldCount], QStringList& list);

#endif
