#include "response_handling.h"

#include <cstring>

#include "address_text.h"
#include "change_notifiers.h"
#include "crc.h"
#include "frame_building.h"
#include "intf.h"
#include "protocol.h"
#include "recipes.h"
#include "reply_check.h"
#include "send_scheduling.h"
#include "unit_index.h"
#include "wrap.h"
#include "writing_values.h"

namespace {

enum {
    crcSize = 2,
    errorReplySize = 10, // the one length at which a reply is searched for an error byte
    errorByteAt = 5,
    mixedRequestOverhead = 4 // bytes that each request of a mixed reply takes
};

const unsigned char* bytesOf(const QByteArray& reply)
{
    return reinterpret_cast<const unsigned char*>(reply.constData());
}

// ---- decoding ---------------------------------------------------------------------------------

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
    return type.area == QLatin1String("I") || type.area == QLatin1String("Q") ||
           type.area == QLatin1String("M");
}

// One unit's value, low byte first.
void unpackUnit(const RegisterType& type, const ReplyData& data, int i, bool lowFirst,
                unsigned char (&bytes)[4])
{
    switch (type.unitBits) {
    case 1:
        bytes[0] = static_cast<unsigned char>(data.at(i / 8) >> (i % 8) & 1);
        return;
    case 8:
        bytes[0] = data.at(i);
        return;
    case 16:
        bytes[lowFirst ? 0 : 1] = data.at(2 * i);
        bytes[lowFirst ? 1 : 0] = data.at(2 * i + 1);
        return;
    case 32: // the first register holds the low-order half
        bytes[0] = data.at(4 * i + 1);
        bytes[1] = data.at(4 * i);
        bytes[2] = data.at(4 * i + 3);
        bytes[3] = data.at(4 * i + 2);
        return;
    }
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

// ---- the pre-read of an "R_bit" write ---------------------------------------------------------

void swapWords(QByteArray& bytes)
{
    for (int i = 0; i + 1 < bytes.size(); i += 2) {
        const char first = bytes.at(i);
        bytes[i] = bytes.at(i + 1);
        bytes[i + 1] = first;
    }
}

// The write back, next in the send list, gets the registers as they are now, with the requested
// bits changed.
void patchWriteBack(const QByteArray& reply, int count, int position, const VARIABLE& request)
{
    if (driver.sendList.size() < 2 || count < 0 || position < 0 ||
        position + static_cast<long long>(count) > reply.size()) {
        return;
    }
    FRAME_PRO& next = driver.sendList[1];
    if (next.dataPosition < 0 ||
        next.dataPosition + static_cast<long long>(count) > next.sendLength - crcSize) {
        return;
    }
    QByteArray registers = reply.mid(position, count);
    swapWords(registers);
    const int first = request.address % 16;
    for (int i = 0; i < request.length && i < recordDataSize; ++i) {
        const int bit = first + i;
        if (bit >= 0 && bit / 8 < registers.size()) {
            const unsigned int mask = 1u << (bit % 8);
            const unsigned int byte = static_cast<unsigned char>(registers.at(bit / 8));
            registers[bit / 8] =
                static_cast<char>(request.data[i] != 0 ? byte | mask : byte & ~mask);
        }
    }
    swapWords(registers);
    memcpy(next.frame + next.dataPosition, registers.constData(),
           static_cast<size_t>(registers.size()));
    appendCrc(next.frame, next.sendLength - crcSize);
}

void decodeReply(const QByteArray& reply, int count, int position, const VARIABLE& request)
{
    const int index = getIndexFromRegName(request.regName);
    if (index < 0) {
        return;
    }
    const RegisterType& type = registerType(index);
    if (type.unitBits == 16 && type.bitNamed &&
        (driver.sendKind == sendWrite || driver.sendKind == sendRecipeDownload)) {
        patchWriteBack(reply, count, position, request);
        return;
    }
    const unsigned int resets = driver.resets;
    const bool upload = driver.sendKind == sendRecipeUpload;
    decodeValues(type, reply, count, position, request.stationNo, request.address);
    if (upload && driver.resets == resets && count > 0) {
        QByteArray words = reply.mid(position, wrapMul(2, count));
        if (!lowByteFirst(type)) {
            swapWords(words);
        }
        storeRecipeUpload(request, bytesOf(words), static_cast<int>(words.size()) / 2);
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
    QString info;
    if (driver.sendList.isEmpty()) {
        return info;
    }
    const VARIABLE& request = driver.sendList.at(0).request;
    info.reserve(48);
    info.append(QString::number(request.stationNo));
    info.append(QLatin1Char('#'));
    info.append(request.regName);
    if (request.regName.endsWith(QLatin1String("_bit"))) {
        info.append(QString::number(request.address / 16));
        info.append(QLatin1Char('.'));
        info.append(QString::number(request.address % 16));
    } else {
        info.append(QString::number(request.address));
    }
    info.append(QLatin1Char('('));
    info.append(QString::number(request.length));
    info.append(QLatin1Char(')'));
    if (reply.size() == errorReplySize && reply.at(errorByteAt) != 0) {
        info.append(QLatin1String(",error code:"));
        info.append(QString::number(bytesOf(reply)[errorByteAt]));
    }
    return info;
}

void decodeValues(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address)
{
    const ReplyData data(reply, position);
    const bool lowFirst = lowByteFirst(type);
    const int bytesOfUnit = bytesPerUnit(type);
    int index = -1;
    for (int i = 0; bytesOfUnit > 0 && i < count; ++i) {
        unsigned char bytes[4] = {0, 0, 0, 0};
        unpackUnit(type, data, i, lowFirst, bytes);
        index = unitIndexOf(station, type.area, wrapAdd(address, i), index + 1);
        if (memcmp(driver.dataAreas.at(index).deviceValue, bytes,
                   static_cast<size_t>(bytesOfUnit)) != 0 &&
            !storeUnit(type, index, bytes, bytesOfUnit)) {
            return;
        }
    }
}

void analyzeFrameOfVal(QByteArray reply, int count, int position, VARIABLE request)
{
    decodeReply(reply, count, position, request);
}

int dealReadFrameReturnSaveData(QByteArray reply)
{
    if (!driver.sendList.isEmpty()) {
        const FRAME_PRO& head = driver.sendList.at(0);
        analyzeFrameOfVal(reply, head.dataCount, head.dataPosition, head.request);
    }
    return 0;
}

int intf_dealRcvFrame(QByteArray* reply, QString* errorText)
{
    if (errorText != 0) {
        *errorText = QString::fromLatin1("");
    }
    if (driver.sendList.isEmpty()) {
        return replyNothingOutstanding;
    }
    const QByteArray received = reply != 0 ? *reply : QByteArray();
    if (errorText != 0) {
        *errorText = getErrorInfo(received);
    }
    unsigned char* bytes = const_cast<unsigned char*>(bytesOf(received));
    switch (check_rcv_data(bytes, driver.currentVars, static_cast<int>(received.size()))) {
    case replyWithData:
        return acceptReply(received, true);
    case replyWithoutData:
        return acceptReply(received, false);
    }
    return refuseReply();
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
