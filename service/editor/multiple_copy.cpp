#include "editor/multiple_copy.h"

#include <algorithm>

#include "driver_lock.h"
#include "intf.h"
#include "protocol/address_text.h"
#include "protocol/register_table.h"

namespace {

enum {
    seriesUnknown = 0,
    seriesComplete = 1,
    seriesClipped = 2
};

enum {
    defaultUnitBits = 16
};

} // namespace

int resolveStep(int step, int unitBits)
{
    if (unitBits > 0 && (step == -1 || step == -2)) {
        step = static_cast<int>((step == -1 ? 16.0f : 32.0f) / static_cast<float>(unitBits));
    }
    return std::max(step, 1);
}

// The highest address is a clip here, not an error: the editor shows the copies that did not fit
// as a run of equal addresses.
int multiCp(QString regName, QString format, int start, int count, int step,
            QVector<QString>& texts, QVector<int>& addresses, int highest, QString highestText)
{
    const bool wordBit = isWordBitFormat(format);
    const int radix = format.isEmpty() ? 0 : radixOfLetter(format.at(0));
    const int index = getIndexFromRegName(regName);
    const long long resolved =
        resolveStep(step, index < 0 ? defaultUnitBits : registerType(index).unitBits);
    int result = seriesComplete;
    QString text;
    for (int i = 0; i < count; ++i) {
        const long long exact = start + i * resolved;
        if (exact > highest) {
            addresses.append(highest);
            texts.append(highestText);
            result = seriesClipped;
            continue;
        }
        const int address = static_cast<int>(exact);
        if (wordBit) {
            text = addr_int2str(address, regName);
            if (text.isEmpty()) {
                return seriesClipped;
            }
        } else if (radix != 0) {
            text = QString::number(static_cast<unsigned int>(address), radix);
        }
        addresses.append(address);
        texts.append(text);
    }
    return result;
}

int intf_multiCopy(QString regName, int start, int count, int step, QVector<QString>& texts,
                   QVector<int>& addresses)
{
    const DriverCall call;
    const int index = getIndexFromRegName(regName);
    if (index < 0) {
        return seriesUnknown;
    }
    const QString(&row)[rangeFieldCount] = ADDRESS_RANGE_PRO[index];
    int highest = 0;
    a2i(row[highestAddress], highest, row[addressFormat], regName);
    return multiCp(regName, row[addressFormat], start, count, step, texts, addresses, highest,
                   row[highestAddress]);
}
