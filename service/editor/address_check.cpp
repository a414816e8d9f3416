#include "editor/address_check.h"

#include "driver_lock.h"
#include "protocol/address_text.h"

namespace {

enum {
    bitItem = -1
};

bool isDoubleWordType(int dataType)
{
    return dataType == 1 || dataType == 3 || dataType == 5 || dataType == 6 || dataType == 9;
}

// With an unknown name the value that the host passed in is judged before the name: below 0, or
// above 1 with the length, it is out of range.
CheckCode check(const AddressQuestion& asked, int* address)
{
    int unused = 0;
    int& value = address != 0 ? *address : unused;
    const int index = getIndexFromRegName(asked.regName);
    if (index >= 0) {
        return checkAgainst(asked, registerType(index), ADDRESS_RANGE_PRO[index], value);
    }
    return isWithinRange(value, asked.length, 0, 0, 16) ? checkUnknown : checkOutOfRange;
}

const char* widthCode(int dataBits)
{
    switch (dataBits) {
    case 1:
        return "0";
    case 32:
        return "2";
    }
    return "1";
}

const char* accessCode(const QString& access)
{
    if (access == QLatin1String("R")) {
        return "0";
    }
    return access == QLatin1String("W") ? "2" : "1";
}

} // namespace

CheckCode checkAgainst(const AddressQuestion& asked, const RegisterType& type,
                       const QString (&row)[rangeFieldCount], int& address)
{
    if ((type.dataBits == 1) != asked.isBit) {
        return checkWrongKind;
    }
    if (asked.withAccess && row[accessField] == QLatin1String("R") &&
        (asked.accessMode == 1 || asked.accessMode == 2)) {
        return checkReadOnly;
    }
    if (asked.withAccess && type.dataBits == 32 && !isDoubleWordType(asked.dataType)) {
        return checkBadType;
    }
    if (a2i(asked.text, address, row[addressFormat], asked.regName) == -1) {
        return checkBadText;
    }
    int highest = 0;
    int lowest = 0;
    a2i(row[highestAddress], highest, row[addressFormat], asked.regName);
    a2i(row[lowestAddress], lowest, row[addressFormat], asked.regName);
    if (!isWithinRange(address, asked.length, lowest, highest, asked.isBit ? 16 : type.unitBits)) {
        return checkOutOfRange;
    }
    address = addrOffset(asked.regName, address);
    return checkValid;
}

bool isWithinRange(int address, int length, int lowest, int highest, int unitBits)
{
    const double unitFactor = unitBits / 16.0;
    return address >= lowest && length / unitFactor + address <= highest + 1.0;
}

void describe(const RegisterType& type, const QString (&row)[rangeFieldCount], QStringList& list)
{
    list.append(row[addressFormat]);
    list.append(row[lowestAddress]);
    list.append(row[highestAddress]);
    list.append(QString::fromLatin1(widthCode(type.dataBits)));
    list.append(QString::fromLatin1(accessCode(row[accessField])));
}

int intf_checkAddrValidity(QString regName, QString text, int* address, int length, int wordFlag)
{
    const DriverCall call;
    const AddressQuestion asked = {regName, text, length, wordFlag == 0, false, 0, 0};
    return check(asked, address);
}

int intf_checkAddr(QString regName, QString text, int* address, int dataType, int length,
                   int accessMode)
{
    const DriverCall call;
    const AddressQuestion asked = {regName, text,     length,    dataType == bitItem,
                                   true,    dataType, accessMode};
    return check(asked, address);
}

// A kind other than 0 and 1 gets the word types too, and the answer 0.
int intf_getRegListByType(int kind, QStringList* list)
{
    const DriverCall call;
    for (int i = 0; list != 0 && i < registerTypeCount; ++i) {
        const int dataBits = registerType(i).dataBits;
        if (kind == 0 ? dataBits == 1 : dataBits > 1) {
            list->append(REG_LIST[i]);
        }
    }
    return kind == 0 || kind == 1 ? 1 : 0;
}

int intf_getRegDiscription(QString regName, QStringList* list)
{
    const DriverCall call;
    const int index = getIndexFromRegName(regName);
    if (index >= 0 && list != 0) {
        describe(registerType(index), ADDRESS_RANGE_PRO[index], *list);
    }
    return 0;
}
