#include "protocol/address_text.h"

#include <QChar>

#include "protocol/register_table.h"
#include "protocol/wrap.h"

namespace {

// Address values of one register type stay below this; a step to the next type in the sort key.
enum {
    weightPerType = 65535
};

bool isBitRegister(const QString& regName)
{
    return regName.contains(QLatin1String("_bit"));
}

} // namespace

int radixOfLetter(QChar letter)
{
    return letter == QLatin1Char('D')   ? 10
           : letter == QLatin1Char('H') ? 16
           : letter == QLatin1Char('O') ? 8
                                        : 0;
}

// Requests that the driver made itself share their name with the table. The names of hosts do not:
// each other row differs in length, first or last letter already. From the end, as every cyclic
// read goes by one of the last seven names.
int indexOfName(const QString& regName)
{
    for (int i = registerTypeCount - 1; i >= 0; --i) {
        if (REG_LIST[i].isSharedWith(regName)) {
            return i;
        }
    }
    const int size = static_cast<int>(regName.size());
    for (int i = registerTypeCount - 1; size > 0 && i >= 0; --i) {
        const QString& name = REG_LIST[i];
        if (name.size() == size && name.at(0) == regName.at(0) &&
            name.at(size - 1) == regName.at(size - 1) && name == regName) {
            return i;
        }
    }
    return -1;
}

int getIndexFromRegName(QString regName)
{
    return indexOfName(regName);
}

QString sharedRegName(const QString& regName)
{
    const int index = indexOfName(regName);
    return index < 0 ? regName : REG_LIST[index];
}

int numberOf(const QString& text, bool& ok, int radix)
{
    return text.trimmed().toInt(&ok, radix);
}

// The bit part is not checked: "3.16" is "4.0", and "3.-1" is "2.15". The range check tells what
// lies outside the register type.
int addr_str2int(QString text, QString regName)
{
    if (!isBitRegister(regName)) {
        return 0;
    }
    const int point = static_cast<int>(text.indexOf(QLatin1Char('.')));
    if (point < 0 || text.indexOf(QLatin1Char('.'), point + 1) >= 0) {
        return -1;
    }
    bool wordOk = false;
    bool bitOk = false;
    const int word = numberOf(text.left(point), wordOk, 10);
    const int bit = numberOf(text.mid(point + 1), bitOk, 10);
    return wordOk && bitOk ? wrapAdd(wrapMul(word, 16), bit) : -1;
}

QString addr_int2str(int address, QString regName)
{
    if (!isBitRegister(regName)) {
        return QString::fromLatin1("");
    }
    QString text = QString::number(address / 16);
    text.append(QLatin1Char('.'));
    text.append(QString::number(address % 16));
    return text;
}

bool isWordBitFormat(const QString& format)
{
    for (int i = 1; i < format.size(); ++i) {
        if (format.at(i) != format.at(0)) {
            return true;
        }
    }
    return false;
}

int a2i(QString text, int& value, QString format, QString regName)
{
    if (isWordBitFormat(format)) {
        const int address = addr_str2int(text, regName);
        if (address == -1) {
            return -1;
        }
        value = address;
        return 1;
    }
    const int radix = format.isEmpty() ? 0 : radixOfLetter(format.at(format.size() - 1));
    bool ok = false;
    value = numberOf(text, ok, radix != 0 ? radix : 10);
    return ok ? 1 : -1;
}

int addrOffset(QString, int address)
{
    return address;
}

int weightAt(int typeCount, int station, int typeIndex, int address)
{
    return wrapAdd(wrapAdd(wrapMul(station, wrapMul(typeCount, weightPerType)),
                           wrapMul(typeIndex, weightPerType)),
                   address);
}
