#include "cache/data_areas.h"

#include <QMutexLocker>
#include <cstring>

#include "cache/change_notifiers.h"
#include "cache/unit_index.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/wrap.h"

namespace {

// `perValue` neighbouring units a value; their flags go up by one bit from the shape's first.
void watchValues(const RegisterType& type, int station, int address, int length,
                 const ValueShape& shape)
{
    const int values = length / shape.lengthPerValue;
    int index = -1;
    for (int i = 0; i < values; ++i) {
        for (int j = 0; j < shape.unitsPerValue; ++j) {
            index = unitIndexOf(station, type.area, address, index + 1);
            UnitEdit unit(index);
            unit->viewFlags |= 1 << (shape.firstFlag + j);
            address = wrapAdd(address, 1);
        }
    }
}

void watchBits(const RegisterType& type, int station, int address, int length)
{
    int index = -1;
    for (int i = 0; i < length; ++i) {
        const BitPlace place(wrapAdd(address, i), type.unitBits);
        if (place.exists()) {
            index = unitIndexOf(station, type.area, place.unit, index + (place.bit == 0 ? 1 : 0));
            UnitEdit unit(index);
            unit->bitMonitor |= 1u << place.bit;
        }
    }
}

// One unit that a host write covers. The change is announced first and stored then: a callback
// that reads back from within still sees the value that is about to go.
class WrittenUnit {
public:
    WrittenUnit(const RegisterType& type, int station, int address, int hint)
        : type_(type), station_(station), address_(address),
          index_(unitIndexOf(station, type.area, address, hint))
    {
        const _DATA_& unit = driver.dataAreas.at(index_);
        memcpy(visible, unit.writePending == 1 ? unit.pendingValue : unit.deviceValue,
               sizeof(visible));
    }

    int index() const
    {
        return index_;
    }

    int visibleWord() const
    {
        return uchar2int16(visible[0], visible[1]);
    }

    // False when the host took the unit away while it was told.
    template <typename Value>
    bool announce(Value oldValue, Value newValue, int timerCounter,
                  void (*notify)(Value*, Value*, int, int)) const
    {
        const unsigned int resets = driver.resets;
        notify(&oldValue, &newValue, index_, timerCounter);
        return driver.resets == resets && isUnitAt(index_, station_, type_.area, address_);
    }

    bool announceView(const QString& regName) const
    {
        return callHost(driver.callBackTag, station_, regName, address_) &&
               isUnitAt(index_, station_, type_.area, address_);
    }

    void store(const unsigned char* bytes, int count) const
    {
        UnitEdit unit(index_);
        memcpy(unit->pendingValue, bytes, static_cast<size_t>(count));
        unit->writePending = 1;
    }

    unsigned char visible[4];

private:
    const RegisterType& type_;
    int station_;
    int address_;
    int index_;
};

// The stores of one unit return the unit's index, -1 when the host took it away.

int storeWordUnit(const RegisterType& type, int station, int address, int hint,
                  const unsigned char* bytes)
{
    const WrittenUnit unit(type, station, address, hint);
    const int newWord = uchar2int16(bytes[0], bytes[1]);
    if (newWord != unit.visibleWord() &&
        !unit.announce(unit.visibleWord(), newWord, type.timerCounter, _wordDataChange)) {
        return -1;
    }
    unit.store(bytes, 2);
    return unit.index();
}

int storeByteUnit(const RegisterType& type, int station, int address, int hint,
                  const unsigned char* bytes)
{
    const WrittenUnit unit(type, station, address, hint);
    if (unit.visible[0] != bytes[0] &&
        !unit.announce(unit.visible[0], bytes[0], type.timerCounter, _byteDataChange)) {
        return -1;
    }
    unit.store(bytes, 1);
    return unit.index();
}

void storeWords(const RegisterType& type, int station, int address, int length,
                const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < length; ++i, data += 2) {
        index = storeWordUnit(type, station, wrapAdd(address, i), index + 1, data);
        if (index < 0) {
            return;
        }
    }
}

void storeWordsOverBytes(const RegisterType& type, int station, int address, int length,
                         const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < 2 * length; ++i) {
        index = storeByteUnit(type, station, wrapAdd(address, i), index + 1, data + i);
        if (index < 0) {
            return;
        }
    }
}

// The second word goes first: the "_D" view that both announce is complete with the first word.
void storeDwordsOverWords(const RegisterType& type, int station, int address, int length,
                          const unsigned char* data)
{
    int index = -3;
    for (int i = 0; i + 1 < length; i += 2, data += 4) {
        const int first = wrapAdd(address, i);
        index = storeWordUnit(type, station, wrapAdd(first, 1), index + 3, data + 2);
        if (index >= 0) {
            index = storeWordUnit(type, station, first, index - 1, data);
        }
        if (index < 0) {
            return;
        }
    }
}

// No shipped type lies so. The stored bytes come from two bytes further on a value, the compared
// ones from four: kept as controllers with such units were first served.
void storeDwordUnits(const RegisterType& type, int station, int address, int length,
                     const unsigned char* data)
{
    const unsigned char* compared = data;
    const unsigned char* stored = data;
    int index = -1;
    for (int i = 0; i < length / 2; ++i, compared += 4, stored += 2) {
        const WrittenUnit unit(type, station, wrapAdd(address, i), index + 1);
        const int oldValue =
            uchar2int32(unit.visible[0], unit.visible[1], unit.visible[2], unit.visible[3]);
        const int newValue = uchar2int32(compared[3], compared[2], compared[1], compared[0]);
        if (oldValue != newValue &&
            !unit.announce(oldValue, newValue, type.timerCounter, _dwordDataChange)) {
            return;
        }
        const unsigned char bytes[4] = {stored[3], stored[2], stored[1], stored[0]};
        unit.store(bytes, 4);
        index = unit.index();
    }
}

void storeSingleUnits(const RegisterType& type, int station, const QString& regName, int address,
                      int length, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < length; ++i) {
        const WrittenUnit unit(type, station, wrapAdd(address, i), index + 1);
        if (unit.visible[0] != data[i] && !unit.announceView(regName)) {
            return;
        }
        unit.store(data + i, 1);
        index = unit.index();
    }
}

int equalWritesQueued(int station, const QString& regName, int address, int length)
{
    QMutexLocker lock(&driver.mutex);
    int count = 0;
    for (int i = 0; i < driver.writeList.size(); ++i) {
        const VARIABLE& queued = driver.writeList.at(i);
        if (queued.address == address && queued.length == length && queued.stationNo == station &&
            queued.regName == regName) {
            ++count;
        }
    }
    return count;
}

// The whole call that a written bit belongs to.
struct BitWrite {
    const RegisterType& type;
    int station;
    const QString& regName;
    int address;
    int length;
};

bool announceBitChange(const BitWrite& write, const WrittenUnit& unit, const BitPlace& place,
                       unsigned char newByte)
{
    if (write.type.unitBits == 16) {
        unsigned char bytes[2] = {unit.visible[0], unit.visible[1]};
        bytes[place.byte] = newByte;
        return unit.announce(unit.visibleWord(), uchar2int16(bytes[0], bytes[1]),
                             write.type.timerCounter, _wordDataChange);
    }
    // Byte units: hosts know the old value as the one last written, and an unsettled unit only by
    // its marker.
    const _DATA_& record = driver.dataAreas.at(unit.index());
    return unit.announce(record.pendingValue[0], newByte,
                         record.writePending == 1 ? write.type.timerCounter : 0, _byteDataChange);
}

// Two bits a bit count its writes under way: one, or two where the same write is queued twice (the
// first on the line, the second behind it).
void countPendingBit(const BitWrite& write, int index, int bit)
{
    const unsigned int once = 1u << (2 * bit);
    if ((driver.dataAreas.at(index).pendingBits & once) == 0) {
        UnitEdit unit(index);
        unit->pendingBits |= once;
    } else if (equalWritesQueued(write.station, write.regName, write.address, write.length) == 2) {
        UnitEdit unit(index);
        unit->pendingBits |= once << 1;
    }
}

int storeBit(const BitWrite& write, const BitPlace& place, int hint, bool on)
{
    const WrittenUnit unit(write.type, write.station, place.unit, hint);
    const unsigned char oldByte = unit.visible[place.byte];
    const unsigned char newByte =
        static_cast<unsigned char>(_setBitValue(oldByte, place.bitInByte, on ? 1 : 0));
    if (oldByte != newByte && !announceBitChange(write, unit, place, newByte)) {
        return -1;
    }
    {
        UnitEdit edit(unit.index());
        if (edit->writePending == 0) {
            memcpy(edit->pendingValue, edit->deviceValue,
                   static_cast<size_t>(write.type.unitBits / 8));
        }
        edit->pendingValue[place.byte] = newByte;
        edit->writePending = 1;
    }
    if (write.type.unitBits == 16) {
        countPendingBit(write, unit.index(), place.bit);
    }
    return unit.index();
}

void storeBits(const BitWrite& write, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < write.length; ++i) {
        const BitPlace place(wrapAdd(write.address, i), write.type.unitBits);
        if (!place.exists()) {
            continue;
        }
        index = storeBit(write, place, index + (place.bit == 0 ? 1 : 0), data[i] == 1);
        if (index < 0) {
            return;
        }
    }
}

} // namespace

UnitLayout layoutOf(const RegisterType& type)
{
    switch (type.dataBits) {
    case 16:
        return type.unitBits == 8 ? wordsOverBytes : wordUnits;
    case 32:
        return type.unitBits == 16  ? dwordsOverWords
               : type.unitBits == 8 ? dwordsOverBytes
                                    : dwordUnits;
    case 1:
    case 8:
        return !type.bitNamed                              ? singleUnits
               : type.unitBits == 16 || type.unitBits == 8 ? bitsOfUnits
                                                           : noUnits;
    }
    return noUnits;
}

const ValueShape& shapeOf(UnitLayout layout)
{
    static const ValueShape shapes[] = {
        // length, units, first flag, bytes
        {1, 1, 0, 2}, // wordUnits
        {1, 2, 1, 1}, // wordsOverBytes
        {2, 1, 0, 4}, // dwordUnits
        {2, 2, 1, 2}, // dwordsOverWords
        {2, 4, 3, 1}, // dwordsOverBytes
        {1, 1, 0, 1}, // singleUnits
    };
    return shapes[layout];
}

int getIndexOfDataArea(int station, QString area, int address, QList<_DATA_>& list)
{
    if (&list == &driver.dataAreas) {
        return unitIndexOf(station, area, address, -1);
    }
    for (int i = 0; i < list.size(); ++i) {
        const _DATA_& unit = list.at(i);
        if (unit.address == address && unit.station == station && unit.area == area) {
            return i;
        }
    }
    list.append(newUnit(station, area, address));
    return static_cast<int>(list.size()) - 1;
}

void markViews(const RegisterType& type, int station, int address, int length)
{
    const UnitLayout layout = layoutOf(type);
    switch (layout) {
    case bitsOfUnits:
        watchBits(type, station, address, length);
        return;
    case noUnits:
        return;
    case wordUnits:
    case wordsOverBytes:
    case dwordUnits:
    case dwordsOverWords:
    case dwordsOverBytes:
    case singleUnits:
        watchValues(type, station, address, length, shapeOf(layout));
        return;
    }
}

int _setDataAreaMonitorFlag(int station, QString regName, int address, int length)
{
    const int index = indexOfName(regName);
    if (index < 0) {
        return -1;
    }
    markViews(registerType(index), station, address, length);
    return 0;
}

void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data)
{
    if (length <= 0) {
        return;
    }
    switch (layoutOf(type)) {
    case wordUnits:
        storeWords(type, station, address, length, data);
        return;
    case wordsOverBytes:
        storeWordsOverBytes(type, station, address, length, data);
        return;
    case dwordsOverWords:
        storeDwordsOverWords(type, station, address, length, data);
        return;
    case dwordUnits:
    case dwordsOverBytes: // storing knows no values over four units
        storeDwordUnits(type, station, address, length, data);
        return;
    case singleUnits:
        storeSingleUnits(type, station, regName, address, length, data);
        return;
    case bitsOfUnits: {
        const BitWrite write = {type, station, regName, address, length};
        storeBits(write, data);
        return;
    }
    case noUnits:
        return;
    }
}

void write_saveDataToArea(int station, QString regName, int address, int length,
                          unsigned char* data)
{
    const int index = indexOfName(regName);
    if (index >= 0) {
        storeWrite(registerType(index), station, regName, address, length, data);
    }
}
