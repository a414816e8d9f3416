#include "cache/pending_values.h"

#include <cstring>

#include "cache/change_notifiers.h"
#include "cache/unit_index.h"
#include "cache/write_queue.h"
#include "protocol.h"
#include "protocol/byte_conversion.h"
#include "protocol/wrap.h"

namespace {

// ---- storing -----------------------------------------------------------------------------------

// One unit that a host write covers.
class WrittenUnit {
public:
    WrittenUnit(const HostRange& write, int address, int hint)
        : write_(write), address_(address),
          index_(unitIndexOf(write.station, write.type.area, address, hint))
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
        return driver.resets == resets && isStillThere();
    }

    bool announceView() const
    {
        return callHost(driver.callBackTag, write_.station, write_.regName, address_) &&
               isStillThere();
    }

    void store(const unsigned char* bytes, int count) const
    {
        UnitEdit unit(index_);
        memcpy(unit->pendingValue, bytes, static_cast<size_t>(count));
        unit->writePending = 1;
    }

    bool isStillThere() const
    {
        return isUnitAt(index_, write_.station, write_.type.area, address_);
    }

    unsigned char visible[4];

private:
    const HostRange& write_;
    int address_;
    int index_;
};

// The stores of one unit return the unit's index, -1 when the host took it away.

int storeWordUnit(const HostRange& write, int address, int hint, const unsigned char* bytes)
{
    const WrittenUnit unit(write, address, hint);
    const int newWord = uchar2int16(bytes[0], bytes[1]);
    if (newWord != unit.visibleWord() &&
        !unit.announce(unit.visibleWord(), newWord, write.type.timerCounter, _wordDataChange)) {
        return -1;
    }
    unit.store(bytes, 2);
    return unit.index();
}

int storeByteUnit(const HostRange& write, int address, int hint, const unsigned char* bytes)
{
    const WrittenUnit unit(write, address, hint);
    if (unit.visible[0] != bytes[0] &&
        !unit.announce(unit.visible[0], bytes[0], write.type.timerCounter, _byteDataChange)) {
        return -1;
    }
    unit.store(bytes, 1);
    return unit.index();
}

bool announceBitOfWord(const HostRange& write, const WrittenUnit& unit, const BitPlace& place,
                       unsigned char newByte)
{
    unsigned char bytes[2] = {unit.visible[0], unit.visible[1]};
    bytes[place.byte] = newByte;
    return unit.announce(unit.visibleWord(), uchar2int16(bytes[0], bytes[1]),
                         write.type.timerCounter, _wordDataChange);
}

void announceWholeWord(int index, int timerCounter)
{
    _wordDataChange(0, 0, index, timerCounter);
}

// The old value is the one last written, and only an unsettled unit is announced as a timer or
// counter.
bool announceBitOfByte(const HostRange& write, const WrittenUnit& unit, const BitPlace&,
                       unsigned char newByte)
{
    const _DATA_& record = driver.dataAreas.at(unit.index());
    return unit.announce(record.pendingValue[0], newByte,
                         record.writePending == 1 ? write.type.timerCounter : 0, _byteDataChange);
}

void announceWholeByte(int index, int timerCounter)
{
    _byteDataChange(0, 0, index, timerCounter);
}

// What is peculiar to the bits of one kind of unit. Those of byte units no shipped type has.
struct BitRules {
    bool (*announceChange)(const HostRange& write, const WrittenUnit& unit, const BitPlace& place,
                           unsigned char newByte);
    void (*announceAll)(int index, int timerCounter);
    size_t bytes;
    bool counted; // how many writes of a bit are under way
};
const BitRules bitsOfWords = {announceBitOfWord, announceWholeWord, 2, true};
const BitRules bitsOfBytes = {announceBitOfByte, announceWholeByte, 1, false};

// ---- how many writes of a bit are under way ---------------------------------------------------

// How often this very write is queued, where a write of the bit is under way already; else 0. -1:
// the host took the unit away while the queue's mutex was waited for.
int timesQueued(const HostRange& write, const WrittenUnit& unit, int bit)
{
    if ((driver.dataAreas.at(unit.index()).pendingBits & 1u << (2 * bit)) == 0) {
        return 0;
    }
    const unsigned int resets = driver.resets;
    const int times = equalWritesQueued(write.station, write.regName, write.address, write.length);
    return driver.resets == resets && unit.isStillThere() ? times : -1;
}

// Two bits a bit count them: one, or two where the same write is queued twice (the first on the
// line, the second behind it).
void countPendingBit(_DATA_& unit, int bit, bool queuedTwice)
{
    const unsigned int once = 1u << (2 * bit);
    if ((unit.pendingBits & once) == 0) {
        unit.pendingBits |= once;
    } else if (queuedTwice) {
        unit.pendingBits |= once << 1;
    }
}

// One less: the count's lower bit goes first, then its upper one. Without any left in the unit, it
// is pending no more.
void discountPendingBit(_DATA_& unit, int bit)
{
    const int lower = 2 * bit;
    const int counted = (unit.pendingBits >> lower & 1u) != 0 ? lower : lower + 1;
    unit.pendingBits =
        static_cast<unsigned int>(_setBitValue(static_cast<int>(unit.pendingBits), counted, 0));
    if (unit.pendingBits == 0) {
        unit.writePending = 0;
    }
}

int storeBit(const HostRange& write, const BitRules& rules, const BitPlace& place, int hint,
             bool on)
{
    const WrittenUnit unit(write, place.unit, hint);
    const unsigned char oldByte = unit.visible[place.byte];
    const unsigned char newByte =
        static_cast<unsigned char>(_setBitValue(oldByte, place.bitInByte, on ? 1 : 0));
    if (oldByte != newByte && !rules.announceChange(write, unit, place, newByte)) {
        return -1;
    }
    const int queued = rules.counted ? timesQueued(write, unit, place.bit) : 0;
    if (queued < 0) {
        return -1;
    }
    UnitEdit edit(unit.index());
    if (edit->writePending == 0) {
        memcpy(edit->pendingValue, edit->deviceValue, rules.bytes);
    }
    // Only this bit: another one of the byte may have been written while the host was told.
    edit->pendingValue[place.byte] = static_cast<unsigned char>(
        _setBitValue(edit->pendingValue[place.byte], place.bitInByte, on ? 1 : 0));
    edit->writePending = 1;
    if (rules.counted) {
        countPendingBit(*edit, place.bit, queued == 2);
    }
    return unit.index();
}

void storeBits(const HostRange& write, const BitRules& rules, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < write.length; ++i) {
        const BitPlace place(wrapAdd(write.address, i), write.type.unitBits);
        if (!place.exists()) {
            continue;
        }
        index = storeBit(write, rules, place, index + (place.bit == 0 ? 1 : 0), data[i] == 1);
        if (index < 0) {
            return;
        }
    }
}

// ---- settling ----------------------------------------------------------------------------------

// Ends the pending state of one unit and takes the written bytes for the controller's own.
void settleUnit(int index, bool accepted, size_t bytes)
{
    UnitEdit unit(index);
    unit->writePending = 0;
    if (accepted) {
        memcpy(unit->deviceValue, unit->pendingValue, bytes);
    }
}

void settleBit(const BitPlace& place, int index, bool accepted)
{
    UnitEdit unit(index);
    discountPendingBit(*unit, place.bit);
    if (accepted) {
        unit->deviceValue[place.byte] = static_cast<unsigned char>(
            _setBitValue(unit->deviceValue[place.byte], place.bitInByte,
                         unit->pendingValue[place.byte] >> place.bitInByte & 1));
    }
}

void settleBits(const HostRange& write, const BitRules& rules, bool accepted)
{
    int index = -1;
    for (int i = 0; i < write.length; ++i) {
        const BitPlace place(wrapAdd(write.address, i), write.type.unitBits);
        if (!place.exists()) {
            continue;
        }
        index = unitIndexOf(write.station, write.type.area, place.unit,
                            index + (place.bit == 0 ? 1 : 0));
        settleBit(place, index, accepted);
        if (driver.dataAreas.at(index).writePending == 0) {
            const unsigned int resets = driver.resets;
            rules.announceAll(index, write.type.timerCounter);
            if (driver.resets != resets) {
                return;
            }
        }
    }
}

} // namespace

void storeWords(const HostRange& write, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < write.length; ++i, data += 2) {
        index = storeWordUnit(write, wrapAdd(write.address, i), index + 1, data);
        if (index < 0) {
            return;
        }
    }
}

void storeWordsOverBytes(const HostRange& write, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < 2 * write.length; ++i) {
        index = storeByteUnit(write, wrapAdd(write.address, i), index + 1, data + i);
        if (index < 0) {
            return;
        }
    }
}

// The second word goes first: the "_D" view that both announce is complete with the first word.
void storeDwordsOverWords(const HostRange& write, const unsigned char* data)
{
    int index = -3;
    for (int i = 0; i + 1 < write.length; i += 2, data += 4) {
        const int first = wrapAdd(write.address, i);
        index = storeWordUnit(write, wrapAdd(first, 1), index + 3, data + 2);
        if (index >= 0) {
            index = storeWordUnit(write, first, index - 1, data);
        }
        if (index < 0) {
            return;
        }
    }
}

// No shipped type lies so. From one value to the next the stored bytes come from two bytes further
// on, the compared ones from four.
void storeDwordUnits(const HostRange& write, const unsigned char* data)
{
    const unsigned char* compared = data;
    const unsigned char* stored = data;
    int index = -1;
    for (int i = 0; i < write.length / 2; ++i, compared += 4, stored += 2) {
        const WrittenUnit unit(write, wrapAdd(write.address, i), index + 1);
        const int oldValue =
            uchar2int32(unit.visible[0], unit.visible[1], unit.visible[2], unit.visible[3]);
        const int newValue = uchar2int32(compared[3], compared[2], compared[1], compared[0]);
        if (oldValue != newValue &&
            !unit.announce(oldValue, newValue, write.type.timerCounter, _dwordDataChange)) {
            return;
        }
        const unsigned char bytes[4] = {stored[3], stored[2], stored[1], stored[0]};
        unit.store(bytes, 4);
        index = unit.index();
    }
}

void storeSingleUnits(const HostRange& write, const unsigned char* data)
{
    int index = -1;
    for (int i = 0; i < write.length; ++i) {
        const WrittenUnit unit(write, wrapAdd(write.address, i), index + 1);
        if (unit.visible[0] != data[i] && !unit.announceView()) {
            return;
        }
        unit.store(data + i, 1);
        index = unit.index();
    }
}

void storeBitsOfWords(const HostRange& write, const unsigned char* data)
{
    storeBits(write, bitsOfWords, data);
}

void storeBitsOfBytes(const HostRange& write, const unsigned char* data)
{
    storeBits(write, bitsOfBytes, data);
}

void wordFailed(const HostRange& write, int index, int)
{
    const _DATA_& unit = driver.dataAreas.at(index);
    int written = uchar2int16(unit.pendingValue[0], unit.pendingValue[1]);
    int device = uchar2int16(unit.deviceValue[0], unit.deviceValue[1]);
    _wordDataChange(&written, &device, index, write.type.timerCounter);
}

void dwordFailed(const HostRange& write, int index, int)
{
    _dwordDataChange(0, 0, index, write.type.timerCounter);
}

void byteFailed(const HostRange& write, int index, int)
{
    _byteDataChange(0, 0, index, write.type.timerCounter);
}

void viewFailed(const HostRange& write, int, int address)
{
    callHost(driver.callBackTag, write.station, write.regName, address);
}

void settleUnits(const HostRange& write, const Settling& settling, bool accepted)
{
    const QString& area = settling.byFullName ? write.regName : write.type.area;
    const int count = wrapMul(settling.units, write.length) / settling.perLength;
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const int address = wrapAdd(write.address, i);
        index = unitIndexOf(write.station, area, address, index + 1);
        settleUnit(index, accepted, settling.bytes);
        if (!accepted) {
            const unsigned int resets = driver.resets;
            settling.failed(write, index, address);
            if (driver.resets != resets) {
                return;
            }
        }
    }
}

void settleBitsOfWords(const HostRange& write, const Settling&, bool accepted)
{
    settleBits(write, bitsOfWords, accepted);
}

void settleBitsOfBytes(const HostRange& write, const Settling&, bool accepted)
{
    settleBits(write, bitsOfBytes, accepted);
}
