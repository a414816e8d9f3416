#include "cache/writing_values.h"

#include <QDebug>
#include <cstring>

#include "cache/change_notifiers.h"
#include "cache/data_areas.h"
#include "cache/unit_index.h"
#include "intf.h"
#include "planning/address_merging.h"
#include "planning/request_queue.h"
#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/frame_building.h"
#include "protocol/wrap.h"

namespace {

// ---- queueing --------------------------------------------------------------------------------

bool isBitRegister(const RegisterType& type)
{
    return type.dataBits == 1;
}

int bytesPerUnit(const RegisterType& type)
{
    return isBitRegister(type) ? 1 : 2;
}

VARIABLE requestOf(const KEY_ADDRESS& piece, int kind, int bytes)
{
    VARIABLE request = VARIABLE();
    request.kind = kind;
    request.stationNo = piece.stationNo;
    request.regName = sharedRegName(piece.regName);
    request.address = piece.address;
    request.length = piece.length;
    if (bytes > 0) {
        memcpy(request.data, piece.data, static_cast<size_t>(bytes));
    }
    return request;
}

// `bytes` is what the whole write carries, at most what a key holds.
void queueWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data, int bytes, int kind)
{
    const bool bits = isBitRegister(type);
    KEY_ADDRESS whole = KEY_ADDRESS();
    whole.stationNo = station;
    whole.regName = regName;
    whole.address = address;
    whole.length = length;
    whole.bitFlag = bits ? -1 : 0;
    if (bytes > 0) {
        memcpy(whole.data, data, static_cast<size_t>(bytes));
    }
    const int limit = pieceLimit(whole.bitFlag);
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, bits || limit < maxFrameWords ? limit : static_cast<int>(maxFrameWords),
                pieces, 1);
    int shortened = 0;
    for (int i = 0; i < pieces.size(); ++i) {
        KEY_ADDRESS piece = pieces.at(i);
        const int pieceBytes = piece.length * bytesPerUnit(type);
        if (!bits) {
            rescalePiece(piece, type, shortened);
        }
        qDebug() << "addVarToList" << piece.stationNo << piece.regName << piece.address
                 << piece.length;
        queueRequest(driver.writeList, requestOf(piece, kind, pieceBytes));
    }
}

// ---- settling --------------------------------------------------------------------------------

// Ends the pending state of one unit and takes the written bytes for the controller's own.
void settleUnit(int index, bool accepted, int bytes)
{
    UnitEdit unit(index);
    unit->writePending = 0;
    if (accepted) {
        memcpy(unit->deviceValue, unit->pendingValue, static_cast<size_t>(bytes));
    }
}

struct SettledUnits {
    const RegisterType& type;
    int station;
    const QString& regName;
    bool accepted;
};

// The announcements of a failed write, one for each kind of unit. False ends the settling: the
// host re-initialised the driver from within.
typedef void (*Announce)(const SettledUnits& settled, int index, int address);

void announceWord(const SettledUnits& settled, int index, int)
{
    const _DATA_& unit = driver.dataAreas.at(index);
    int written = uchar2int16(unit.pendingValue[0], unit.pendingValue[1]);
    int device = uchar2int16(unit.deviceValue[0], unit.deviceValue[1]);
    _wordDataChange(&written, &device, index, settled.type.timerCounter);
}

void announceDword(const SettledUnits& settled, int index, int)
{
    _dwordDataChange(0, 0, index, settled.type.timerCounter);
}

void announceByte(const SettledUnits& settled, int index, int)
{
    _byteDataChange(0, 0, index, settled.type.timerCounter);
}

void announceView(const SettledUnits& settled, int, int address)
{
    callHost(driver.callBackTag, settled.station, settled.regName, address);
}

void settleUnits(const SettledUnits& settled, const QString& area, int address, int count,
                 int bytes, Announce announce)
{
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const int unit = wrapAdd(address, i);
        index = unitIndexOf(settled.station, area, unit, index + 1);
        settleUnit(index, settled.accepted, bytes);
        if (!settled.accepted) {
            const unsigned int resets = driver.resets;
            announce(settled, index, unit);
            if (driver.resets != resets) {
                return;
            }
        }
    }
}

// One write of the bit less is under way: the count's lower bit goes first, then its upper one.
void settleBit(const BitPlace& place, int index, bool accepted)
{
    UnitEdit unit(index);
    const int pending = static_cast<int>(unit->pendingBits);
    const int lower = 2 * place.bit;
    const int counted = (unit->pendingBits >> lower & 1u) != 0 ? lower : lower + 1;
    unit->pendingBits = static_cast<unsigned int>(_setBitValue(pending, counted, 0));
    if (unit->pendingBits == 0) {
        unit->writePending = 0;
    }
    if (accepted) {
        unit->deviceValue[place.byte] = static_cast<unsigned char>(
            _setBitValue(unit->deviceValue[place.byte], place.bitInByte,
                         unit->pendingValue[place.byte] >> place.bitInByte & 1));
    }
}

void settleBits(const SettledUnits& settled, int address, int length)
{
    const bool words = settled.type.unitBits == 16;
    int index = -1;
    for (int i = 0; i < length; ++i) {
        const BitPlace place(wrapAdd(address, i), settled.type.unitBits);
        if (!place.exists()) {
            continue;
        }
        index = unitIndexOf(settled.station, settled.type.area, place.unit,
                            index + (place.bit == 0 ? 1 : 0));
        settleBit(place, index, settled.accepted);
        if (driver.dataAreas.at(index).writePending == 0) {
            const unsigned int resets = driver.resets;
            if (words) {
                _wordDataChange(0, 0, index, settled.type.timerCounter);
            } else {
                _byteDataChange(0, 0, index, settled.type.timerCounter);
            }
            if (driver.resets != resets) {
                return;
            }
        }
    }
}

} // namespace

void rescalePiece(KEY_ADDRESS& piece, const RegisterType& type, int& shortened)
{
    const int length = type.unitBits > 0 ? piece.length * 16 / type.unitBits : piece.length;
    piece.address = wrapSub(piece.address, shortened);
    shortened = wrapAdd(shortened, wrapSub(piece.length, length));
    piece.length = length;
}

int intf_setData(int station, QString regName, int address, int length, unsigned char* data,
                 int kind)
{
    const int index = indexOfName(regName);
    if (driver.writeToCacheOnly == 0) {
        if (index < 0) {
            return -1;
        }
        const RegisterType& type = registerType(index);
        if (length > recordDataSize / bytesPerUnit(type)) {
            return -1;
        }
        if (length < 0) {
            return 1;
        }
        queueWrite(type, station, regName, address, length, data, length * bytesPerUnit(type),
                   kind);
    }
    if (index >= 0) {
        storeWrite(registerType(index), station, regName, address, length, data);
    }
    return 1;
}

void settleWrite(const RegisterType& type, int station, const QString& regName, int address,
                 int length, bool accepted)
{
    if (length <= 0) {
        return;
    }
    const SettledUnits settled = {type, station, regName, accepted};
    switch (layoutOf(type)) {
    case wordUnits:
    case dwordsOverWords: // length counts words here, not values
        settleUnits(settled, type.area, address, length, 2, announceWord);
        return;
    case dwordUnits:
        settleUnits(settled, type.area, address, length, 4, announceDword);
        return;
    case wordsOverBytes:
        settleUnits(settled, type.area, address, wrapMul(2, length), 1, announceByte);
        return;
    case dwordsOverBytes: // the units that storing touched
        settleUnits(settled, type.area, address, length / 2, 1, announceByte);
        return;
    case singleUnits:
        if (type.dataBits == 8) {
            settleUnits(settled, type.area, address, length, 1, announceByte);
        } else { // one-bit registers without "_bit" are looked up by their full name, as ever
            settleUnits(settled, regName, address, length, 1, announceView);
        }
        return;
    case bitsOfUnits:
        settleBits(settled, address, length);
        return;
    case noUnits:
        return;
    }
}

void _write_FailOrSuc(int station, QString regName, int address, int length, int result)
{
    const int index = indexOfName(regName);
    if (index >= 0) {
        settleWrite(registerType(index), station, regName, address, length, result == 1);
    }
}
