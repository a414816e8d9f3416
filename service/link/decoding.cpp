#include "link/decoding.h"

#include <algorithm>
#include <cstring>

#include "cache/change_notifiers.h"
#include "cache/pending_values.h"
#include "cache/unit_index.h"
#include "cache/unit_widths.h"
#include "protocol.h"
#include "protocol/byte_conversion.h"
#include "protocol/wrap.h"

namespace {

inline unsigned int wordOf(unsigned char low, unsigned char high)
{
    return low | static_cast<unsigned int>(high) << 8;
}

unsigned int deviceWord(const _DATA_& unit)
{
    return wordOf(unit.deviceValue[0], unit.deviceValue[1]);
}

// `low` is the place of the low byte in a word on the line.
template <int low>
unsigned int lineWord(const unsigned char* word)
{
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): a word for each unit is there
    return wordOf(word[low], word[1 - low]);
}

// Four words as one number, in that order in which eight bytes of a reply are one load.
template <int low>
unsigned long long fourWords(unsigned int a, unsigned int b, unsigned int c, unsigned int d)
{
    return low == 0 ? (a | b << 16) | static_cast<unsigned long long>(c | d << 16) << 32
                    : (d | c << 16) | static_cast<unsigned long long>(b | a << 16) << 32;
}

template <int low>
bool holdFourWords(QList<_DATA_>::const_iterator units, const unsigned char* words)
{
    return fourWords<low>(deviceWord(units[0]), deviceWord(units[1]), deviceWord(units[2]),
                          deviceWord(units[3])) ==
           fourWords<low>(lineWord<low>(words), lineWord<low>(words + 2), lineWord<low>(words + 4),
                          lineWord<low>(words + 6));
}

// How many of `count` units from the record at `index` on hold what arrived. In a plant at rest
// that is every word of every reply, so four are compared at a time.
template <int low>
int unchangedWords(int index, int count, const unsigned char* words)
{
    QList<_DATA_>::const_iterator unit = driver.dataAreas.constBegin() + index;
    const QList<_DATA_>::const_iterator first = unit;
    const QList<_DATA_>::const_iterator end = unit + count;
    const QList<_DATA_>::const_iterator endOfFours = unit + (count & ~3);
    for (; unit != endOfFours && holdFourWords<low>(unit, words); words += 8) {
        unit += 4;
    }
    for (; unit != end && deviceWord(*unit) == lineWord<low>(words); words += 2) {
        ++unit;
    }
    return static_cast<int>(unit - first);
}

// The data bytes of a reply; what the reply does not have reads as 0.
class ReplyData {
public:
    ReplyData(const QByteArray& reply, int position)
        : bytes_(reinterpret_cast<const unsigned char*>(reply.constData())),
          size_(static_cast<int>(reply.size())), position_(position)
    {
    }

    unsigned char at(long long i) const
    {
        const long long place = position_ + i;
        return place >= 0 && place < size_ ? bytes_[place] : static_cast<unsigned char>(0);
    }

    // The words from word i on, `count` of them or as many as the reply has, but at least one: a
    // word beyond the reply is made in `edge`.
    const unsigned char* wordsFrom(int i, int& count, unsigned char (&edge)[2]) const
    {
        const long long place = position_ + 2LL * i;
        if (place >= 0 && place + 2 <= size_) {
            count = std::min(count, static_cast<int>(size_ - place) / 2);
            return bytes_ + place;
        }
        count = 1;
        edge[0] = at(2LL * i);
        edge[1] = at(2LL * i + 1);
        return edge;
    }

private:
    const unsigned char* bytes_;
    int size_;
    int position_;
};

// Of units from the record at `index` on, so many are dealt with until the run is over; -1: the
// host re-initialised. A word is stored before it is announced: a callback that reads back sees the
// new value.
template <int low>
int storeReplyWords(const RegisterType& type, int index, const unsigned char* words, int count)
{
    int done = unchangedWords<low>(index, count, words);
    if (done == count) {
        return count;
    }
    const AreaNames names(type.area);
    RunEdit run(index);
    for (; done < count; ++done) {
        const unsigned char* word = words + 2 * static_cast<size_t>(done);
        _DATA_& unit = run[done];
        const unsigned int before = deviceWord(unit);
        const unsigned int after = lineWord<low>(word);
        if (before == after) {
            continue;
        }
        unit.deviceValue[0] = word[low];
        unit.deviceValue[1] = word[1 - low];
        showDeviceValue(unit);
        const WatchedUnit watched(unit);
        if (watched.isWatched()) {
            run.pause();
            if (!announceWord(watched, names, before ^ after, type.timerCounter)) {
                return -1;
            }
            if (!run.resume()) {
                return done + 1;
            }
        }
    }
    return count;
}

// ---- units that this controller has not, one by one ---------------------------------------------

// Value i of a reply, low byte first.
typedef void (*Unpack)(const ReplyData& data, int i, unsigned char* out);

void unpackBit(const ReplyData& data, int i, unsigned char* out)
{
    out[0] = static_cast<unsigned char>(data.at(i / 8) >> (i % 8) & 1);
}

void unpackByte(const ReplyData& data, int i, unsigned char* out)
{
    out[0] = data.at(i);
}

// The first register holds the low-order half.
void unpackDword(const ReplyData& data, int i, unsigned char* out)
{
    out[0] = data.at(4LL * i + 1);
    out[1] = data.at(4LL * i);
    out[2] = data.at(4LL * i + 3);
    out[3] = data.at(4LL * i + 2);
}

// Tells the host of a unit that held `before` and now holds `after`.
typedef void (*Tell)(int index, const unsigned char* before, const unsigned char* after,
                     int timerCounter);

void tellBit(int index, const unsigned char*, const unsigned char*, int)
{
    _bitDataChange(index);
}

void tellByte(int index, const unsigned char* before, const unsigned char* after, int timerCounter)
{
    unsigned char oldByte = before[0];
    unsigned char newByte = after[0];
    _byteDataChange(&oldByte, &newByte, index, timerCounter);
}

void tellDword(int index, const unsigned char* before, const unsigned char* after, int timerCounter)
{
    int oldDword = uchar2int32(before[0], before[1], before[2], before[3]);
    int newDword = uchar2int32(after[0], after[1], after[2], after[3]);
    _dwordDataChange(&oldDword, &newDword, index, timerCounter);
}

struct OtherUnits {
    size_t bytes; // of a unit that are used
    Unpack unpack;
    Tell tell;
};

// As storeReplyWords() does. False: the host re-initialised.
bool storeUnit(const OtherUnits& units, int index, const unsigned char* bytes, int timerCounter)
{
    unsigned char before[4];
    {
        UnitEdit unit(index);
        memcpy(before, unit->deviceValue, sizeof(before));
        memcpy(unit->deviceValue, bytes, units.bytes);
        showDeviceValue(*unit);
    }
    const unsigned int resets = driver.resets;
    units.tell(index, before, bytes, timerCounter);
    return driver.resets == resets;
}

void decodeOther(const OtherUnits& units, const RegisterType& type, const ReplyData& data,
                 int count, int station, int address)
{
    int index = -1;
    for (int i = 0; i < count; ++i) {
        index = unitIndexOf(station, type.area, wrapAdd(address, i), index + 1);
        unsigned char value[4] = {0, 0, 0, 0};
        units.unpack(data, i, value);
        if (memcmp(driver.dataAreas.at(index).deviceValue, value, units.bytes) != 0 &&
            !storeUnit(units, index, value, type.timerCounter)) {
            return;
        }
    }
}

} // namespace

// Every register type of this controller: the units are found, compared and stored run by run.
void decodeWords(const RegisterType& type, const QByteArray& reply, int count, int position,
                 int station, int address)
{
    const ReplyData data(reply, position);
    int index = -1;
    for (int i = 0; i < count;) {
        UnitsFound found = unitsFrom(station, type.area, wrapAdd(address, i), index + 1, count - i);
        unsigned char edge[2] = {0, 0};
        const unsigned char* words = data.wordsFrom(i, found.count, edge);
        const int stored = type.lowByteFirst
                               ? storeReplyWords<0>(type, found.index, words, found.count)
                               : storeReplyWords<1>(type, found.index, words, found.count);
        if (stored < 0) {
            return;
        }
        i += stored;
        index = found.index + stored - 1;
    }
}

void decodeDwords(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address)
{
    const OtherUnits dwords = {4, unpackDword, tellDword};
    decodeOther(dwords, type, ReplyData(reply, position), count, station, address);
}

void decodeBytes(const RegisterType& type, const QByteArray& reply, int count, int position,
                 int station, int address)
{
    const OtherUnits bytes = {1, unpackByte, tellByte};
    decodeOther(bytes, type, ReplyData(reply, position), count, station, address);
}

void decodeBits(const RegisterType& type, const QByteArray& reply, int count, int position,
                int station, int address)
{
    const OtherUnits bits = {1, unpackBit, tellBit};
    decodeOther(bits, type, ReplyData(reply, position), count, station, address);
}

void decodeNothing(const RegisterType&, const QByteArray&, int, int, int, int) {}

void decodeValues(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address)
{
    widthOf(type).decode(type, reply, count, position, station, address);
}
