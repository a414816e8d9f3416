#include "link/response_handling.h"

#include <QVarLengthArray>
#include <algorithm>
#include <cstring>

#include "cache/change_notifiers.h"
#include "cache/data_areas.h"
#include "cache/unit_index.h"
#include "cache/writing_values.h"
#include "intf.h"
#include "link/send_scheduling.h"
#include "planning/recipes.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/frame_building.h"
#include "protocol/reply_check.h"
#include "protocol/wrap.h"

namespace {

enum {
    errorReplySize = 10, // the one length at which a reply is searched for an error byte
    errorByteAt = 5,
    mixedRequestOverhead = 4 // bytes that each request of a mixed reply takes
};

const unsigned char* bytesOf(const QByteArray& reply)
{
    return reinterpret_cast<const unsigned char*>(reply.constData());
}

// ---- the text that describes a frame ----------------------------------------------------------

// Every reply comes with this text, good or bad, so it is written in place.
enum {
    longestFixedText = 80
}; // five numbers of up to eleven digits, ",error code:", separators

typedef QVarLengthArray<QChar, 128> TextBuffer;

QChar* putText(QChar* out, const char* latin1)
{
    for (; *latin1 != 0; ++latin1) {
        *out++ = QLatin1Char(*latin1);
    }
    return out;
}

QChar* putNumber(QChar* out, int number)
{
    char digits[12]; // "-2147483648" and the end
    char* first = digits + sizeof(digits) - 1;
    *first = 0;
    unsigned int rest =
        number < 0 ? 0u - static_cast<unsigned int>(number) : static_cast<unsigned int>(number);
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (number < 0) {
        *--first = '-';
    }
    return putText(out, first);
}

QString describeRequest(const VARIABLE& request, const QByteArray& reply)
{
    const int nameSize = static_cast<int>(request.regName.size());
    TextBuffer buffer(nameSize + longestFixedText);
    QChar* out = putNumber(buffer.data(), request.stationNo);
    *out++ = QLatin1Char('#');
    out = std::copy(request.regName.constData(), request.regName.constData() + nameSize, out);
    if (request.regName.endsWith(QLatin1String("_bit"))) {
        out = putNumber(out, request.address / 16);
        *out++ = QLatin1Char('.');
        out = putNumber(out, request.address % 16);
    } else {
        out = putNumber(out, request.address);
    }
    *out++ = QLatin1Char('(');
    out = putNumber(out, request.length);
    *out++ = QLatin1Char(')');
    if (reply.size() == errorReplySize && reply.at(errorByteAt) != 0) {
        out = putText(out, ",error code:");
        out = putNumber(out, bytesOf(reply)[errorByteAt]);
    }
    return QString(buffer.constData(), static_cast<int>(out - buffer.constData()));
}

// ---- decoding ---------------------------------------------------------------------------------

inline unsigned int wordOf(unsigned char low, unsigned char high)
{
    return low | static_cast<unsigned int>(high) << 8;
}

// `low` is the place of the low byte in a word on the line.
template <int low>
bool holdsWord(const _DATA_& unit, const unsigned char* word)
{
    return wordOf(unit.deviceValue[0], unit.deviceValue[1]) == wordOf(word[low], word[1 - low]);
}

// How many of `count` units from the record at `index` on hold what arrived. Most words of most
// replies are what they were: this is the loop that a panel spends its polls in.
template <int low>
int unchangedWords(int index, int count, const unsigned char* words)
{
    QList<_DATA_>::const_iterator unit = driver.dataAreas.constBegin() + index;
    const QList<_DATA_>::const_iterator first = unit;
    const QList<_DATA_>::const_iterator end = unit + count;
    for (;
         end - unit >= 4 && holdsWord<low>(unit[0], words) && holdsWord<low>(unit[1], words + 2) &&
         holdsWord<low>(unit[2], words + 4) && holdsWord<low>(unit[3], words + 6);
         words += 8) {
        unit += 4;
    }
    for (; unit != end && holdsWord<low>(*unit, words); words += 2) {
        ++unit;
    }
    return static_cast<int>(unit - first);
}

// The data bytes of a reply; what the reply does not have reads as 0.
class ReplyData {
public:
    ReplyData(const QByteArray& reply, int position)
        : bytes_(bytesOf(reply)), size_(static_cast<int>(reply.size())), position_(position)
    {
    }

    unsigned char at(int i) const
    {
        const long long place = static_cast<long long>(position_) + i;
        return place >= 0 && place < size_ ? bytes_[place] : static_cast<unsigned char>(0);
    }

    // How many of `count` units of 16 bits, from value i on, hold what arrived.
    int unchanged(int index, int i, int count, bool lowFirst) const
    {
        const long long place = position_ + 2LL * i;
        if (place < 0 || place >= size_) {
            return 0;
        }
        const int there = std::min(count, static_cast<int>(size_ - place) / 2);
        return lowFirst ? unchangedWords<0>(index, there, bytes_ + place)
                        : unchangedWords<1>(index, there, bytes_ + place);
    }

private:
    const unsigned char* bytes_;
    int size_;
    int position_;
};

int intOf(const unsigned char* bytes, int count)
{
    return count == 4   ? uchar2int32(bytes[0], bytes[1], bytes[2], bytes[3])
           : count == 2 ? uchar2int16(bytes[0], bytes[1])
                        : bytes[0];
}

void announceUnit(const RegisterType& type, int index, int oldValue, int newValue)
{
    unsigned char oldByte = static_cast<unsigned char>(oldValue & 0xFF);
    unsigned char newByte = static_cast<unsigned char>(newValue & 0xFF);
    switch (type.unitBits) {
    case 1:
        _bitDataChange(index);
        return;
    case 8:
        _byteDataChange(&oldByte, &newByte, index, type.timerCounter);
        return;
    case 16:
        _wordDataChange(&oldValue, &newValue, index, type.timerCounter);
        return;
    case 32:
        _dwordDataChange(&oldValue, &newValue, index, type.timerCounter);
        return;
    }
}

// Stored before it is announced: a callback that reads back sees the new value. With no write on
// its way the controller's value is the visible one again. False: the host re-initialised.
bool storeUnit(const RegisterType& type, int index, const unsigned char* bytes, int count)
{
    const int oldValue = intOf(driver.dataAreas.at(index).deviceValue, count);
    {
        UnitEdit unit(index);
        memcpy(unit->deviceValue, bytes, static_cast<size_t>(count));
        if (driver.writeList.isEmpty()) {
            unit->writePending = 0;
        }
    }
    const unsigned int resets = driver.resets;
    announceUnit(type, index, oldValue, intOf(bytes, count));
    return driver.resets == resets;
}

// Coils arrive with the first one in bit 0 of the first byte: low byte first. Registers arrive high
// byte first.
bool lowByteFirst(const RegisterType& type)
{
    const QChar area = type.area.size() == 1 ? type.area.at(0) : QChar();
    return area == QLatin1Char('I') || area == QLatin1Char('Q') || area == QLatin1Char('M');
}

int bytesPerUnit(const RegisterType& type)
{
    switch (type.unitBits) {
    case 1:
    case 8:
        return 1;
    case 16:
        return 2;
    case 32:
        return 4;
    }
    return 0;
}

// Value i, low byte first.
void unpackUnit(const RegisterType& type, const ReplyData& data, int i, unsigned char (&out)[4])
{
    switch (type.unitBits) {
    case 1:
        out[0] = static_cast<unsigned char>(data.at(i / 8) >> (i % 8) & 1);
        return;
    case 8:
        out[0] = data.at(i);
        return;
    case 16: {
        const int low = lowByteFirst(type) ? 0 : 1;
        out[0] = data.at(2 * i + low);
        out[1] = data.at(2 * i + 1 - low);
        return;
    }
    case 32: // the first register holds the low-order half
        out[0] = data.at(4 * i + 1);
        out[1] = data.at(4 * i);
        out[2] = data.at(4 * i + 3);
        out[3] = data.at(4 * i + 2);
        return;
    }
}

// ---- what a reply is for ------------------------------------------------------------------------

// First the cache, then the host's buffer. The request is a copy: a callback may drop the frame.
void decodeUpload(const RegisterType& type, const QByteArray& reply, int count, int position,
                  VARIABLE request)
{
    const unsigned int resets = driver.resets;
    decodeValues(type, reply, count, position, request.stationNo, request.address);
    if (driver.resets != resets || count <= 0) {
        return;
    }
    QByteArray words = reply.mid(position, wrapMul(2, count));
    const int whole = static_cast<int>(words.size()) / 2;
    unsigned char* bytes = reinterpret_cast<unsigned char*>(words.data());
    if (!lowByteFirst(type)) {
        swapBytesOfWords(bytes, whole);
    }
    storeRecipeUpload(request, bytes, whole);
}

void decodeReply(const QByteArray& reply, int count, int position, const VARIABLE& request)
{
    const int index = indexOfName(request.regName);
    if (index < 0) {
        return;
    }
    const RegisterType& type = registerType(index);
    if (type.unitBits == 16 && type.bitNamed &&
        (driver.sendKind == sendWrite || driver.sendKind == sendRecipeDownload)) {
        if (driver.sendList.size() >= 2) {
            patchWriteBack(driver.sendList[1], reply, count, position, request);
        }
        return;
    }
    if (driver.sendKind == sendRecipeUpload) {
        decodeUpload(type, reply, count, position, request);
    } else {
        decodeValues(type, reply, count, position, request.stationNo, request.address);
    }
}

// ---- the frame on the line --------------------------------------------------------------------

void takeHead()
{
    if (!driver.sendList.isEmpty()) {
        driver.sendList.removeFirst();
    }
    ++driver.sendTurn;
}

ReplyResult acceptReply(const QByteArray& reply, bool withData)
{
    const unsigned int turn = driver.sendTurn;
    if (withData) {
        driver.commFailed = 0;
        dealReadFrameReturnSaveData(reply);
    } else {
        if (driver.sendKind == sendWrite) {
            const VARIABLE& request = driver.sendList.at(0).request;
            _write_FailOrSuc(request.stationNo, request.regName, request.address, request.length,
                             1);
        }
        if (driver.sendTurn == turn) {
            driver.commFailed = 0;
        }
    }
    if (driver.sendTurn != turn) {
        return replyAccepted; // a callback re-initialised or polled on: this frame is gone
    }
    takeHead();
    if (driver.sendList.isEmpty()) {
        dealListWhenFinish();
    }
    driver.retryCount = 0;
    return replyAccepted;
}

ReplyResult refuseReply()
{
    driver.retryCount = wrapAdd(driver.retryCount, 1);
    if (driver.retryCount < driver.retryLimit) {
        return replyBad;
    }
    const unsigned int turn = driver.sendTurn;
    driver.commFailed = 1;
    if (driver.sendKind == sendWrite) {
        const VARIABLE& request = driver.sendList.at(0).request;
        _write_FailOrSuc(request.stationNo, request.regName, request.address, request.length, 0);
    }
    if (driver.sendTurn == turn) {
        driver.sendList.clear();
        ++driver.sendTurn;
        driver.retryCount = 0;
        dealListWhenFinish();
    }
    return replyAbandoned;
}

} // namespace

QString getErrorInfo(QByteArray reply)
{
    return driver.sendList.isEmpty() ? QString()
                                     : describeRequest(driver.sendList.at(0).request, reply);
}

void decodeValues(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address)
{
    const ReplyData data(reply, position);
    const int size = bytesPerUnit(type);
    const bool lowFirst = lowByteFirst(type);
    int index = -1;
    for (int i = 0; size > 0 && i < count; ++i) {
        index = unitIndexOf(station, type.area, wrapAdd(address, i), index + 1);
        if (size == 2) {
            const int same = data.unchanged(index, i, unitsInRun(index, count - i), lowFirst);
            if (same > 0) {
                i += same - 1;
                index += same - 1;
                continue;
            }
        }
        unsigned char value[4] = {0, 0, 0, 0};
        unpackUnit(type, data, i, value);
        if (memcmp(driver.dataAreas.at(index).deviceValue, value, static_cast<size_t>(size)) != 0 &&
            !storeUnit(type, index, value, size)) {
            return;
        }
    }
}

int check_rcv_data(unsigned char* reply, QList<VARIABLE>, int length)
{
    return driver.sendList.isEmpty() ? replyRejected
                                     : checkReply(driver.sendList.at(0), reply, length);
}

void analyzeFrameOfVal(QByteArray reply, int count, int position, VARIABLE request)
{
    decodeReply(reply, count, position, request);
}

int dealReadFrameReturnSaveData(QByteArray reply)
{
    if (!driver.sendList.isEmpty()) {
        const FRAME_PRO& head = driver.sendList.at(0);
        decodeReply(reply, head.dataCount, head.dataPosition, head.request);
    }
    return 0;
}

int intf_dealRcvFrame(QByteArray* reply, QString* errorText)
{
    if (driver.sendList.isEmpty()) {
        if (errorText != 0) {
            *errorText = QString::fromLatin1("");
        }
        return replyNothingOutstanding;
    }
    // Shares the bytes: the host may use its buffer again in the callback.
    const QByteArray received = reply != 0 ? *reply : QByteArray();
    if (errorText != 0) {
        *errorText = getErrorInfo(received);
    }
    // The given signature takes bytes that it could change; it does not.
    const int check = check_rcv_data(const_cast<unsigned char*>(bytesOf(received)),
                                     driver.currentVars, static_cast<int>(received.size()));
    return check == replyRejected ? refuseReply() : acceptReply(received, check == replyWithData);
}

// Replies that carry several requests; no controller of this family sends them.
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
