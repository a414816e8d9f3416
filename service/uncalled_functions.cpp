#include "uncalled_functions.h"

#include <algorithm>
#include <cstring>

#include "cache/data_areas.h"
#include "cache/unit_index.h"
#include "link/error_text.h"
#include "link/response_handling.h"
#include "planning/address_merging.h"
#include "planning/pieces.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/frame_building.h"
#include "protocol/reply_check.h"
#include "protocol/wrap.h"

namespace {

enum {
    mixedRequestOverhead = 4 // bytes that each request of a mixed reply takes
};

int hexNibble(const QByteArray& text, int position)
{
    if (position < 0 || position >= text.size()) {
        return 0;
    }
    const int code = static_cast<unsigned char>(text.at(position));
    if (code < '0' || code == '@') {
        return 0;
    }
    return code < '@' ? code - '0' : (code - 'A' + 10) & 0x0F;
}

} // namespace

unsigned char asc2hex(QByteArray text, int position)
{
    return static_cast<unsigned char>(hexNibble(text, position) << 4 |
                                      hexNibble(text, wrapAdd(position, 1)));
}

int judgeAddrMerge(KEY_ADDRESS a, KEY_ADDRESS b, int useGap)
{
    return keepApart(runOf(a, 0), runOf(b, 0), useGap == 0 ? 0 : driver.mergeGap) ? 1 : 0;
}

void addrMerge(QList<KEY_ADDRESS>& keys, int mode)
{
    const QVector<Run> runs = planRuns(keys, mode);
    QList<KEY_ADDRESS> merged;
    for (int i = 0; i < runs.size(); ++i) {
        const Run& run = runs.at(i);
        KEY_ADDRESS key = keys.at(run.opener);
        key.regName = run.regName;
        key.address = run.address;
        key.length = run.length;
        merged.append(key);
    }
    keys = merged;
}

void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData)
{
    const bool bits = key.bitFlag == bitValues;
    if (maxLen < 1) {
        maxLen = bits ? unlimitedPieceBits : unlimitedPieceWords;
    }
    if (key.length <= maxLen) {
        out.append(key);
        return;
    }
    const long long size = bits ? 1 : 2;
    for (long long done = 0; done < key.length; done += maxLen) {
        KEY_ADDRESS piece = key;
        piece.address = wrapAdd(key.address, static_cast<int>(done));
        piece.length = static_cast<int>(std::min<long long>(maxLen, key.length - done));
        if (withData == 1) {
            // No more than the whole key's buffer holds behind this piece's place.
            const long long from = std::min<long long>(size * done, recordDataSize);
            const long long bytes = std::min(size * piece.length, recordDataSize - from);
            memcpy(piece.data, key.data + from, static_cast<size_t>(bytes));
        }
        out.append(piece);
    }
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

int getRegAddressWeight(int station, QString regName, int address, int)
{
    return weightAt(static_cast<int>(driver.regNames.size()), station,
                    static_cast<int>(driver.regNames.indexOf(regName)), address);
}

void write_saveDataToArea(int station, QString regName, int address, int length,
                          unsigned char* data)
{
    const int index = indexOfName(regName);
    if (index >= 0) {
        storeWrite(registerType(index), station, regName, address, length, data);
    }
}

int getReadFrame(QList<VARIABLE> list)
{
    return list.isEmpty() ? 0 : frameRead(list.at(0), driver.sendList);
}

int check_rcv_data(unsigned char* reply, QList<VARIABLE>, int length)
{
    return driver.sendList.isEmpty() ? replyRejected
                                     : checkReply(driver.sendList.at(0), reply, length);
}

QString getErrorInfo(QByteArray reply)
{
    QString text;
    if (!driver.sendList.isEmpty()) {
        describeRequest(driver.sendList.at(0).request, reply, text);
    }
    return text;
}

void analyzeFrameOfVal(QByteArray reply, int count, int position, VARIABLE request)
{
    decodeReply(reply, count, position, request);
}

int allMix_GetDataStartPosition(QByteArray, QList<VARIABLE>, int n)
{
    if (driver.frameIndex < 0 || driver.frameIndex >= driver.sendList.size()) {
        return 0;
    }
    const int counted = n < driver.frameVarCount ? n : driver.frameVarCount;
    const int position = driver.sendList.at(driver.frameIndex).dataPosition;
    return counted > 0 ? wrapAdd(position, wrapMul(mixedRequestOverhead, counted)) : position;
}

int allMix_GetRecvLenFromReadList(QList<VARIABLE>)
{
    return 0;
}
