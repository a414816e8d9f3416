#include "link/response_handling.h"

#include "cache/data_areas.h"
#include "cache/unit_widths.h"
#include "driver_lock.h"
#include "intf.h"
#include "link/decoding.h"
#include "link/error_text.h"
#include "link/send_scheduling.h"
#include "planning/recipes.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/frame_building.h"
#include "protocol/reply_check.h"
#include "protocol/wrap.h"

namespace {

const QByteArray nothingReceived;

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
    if (!type.lowByteFirst) {
        swapBytesOfWords(bytes, whole);
    }
    storeRecipeUpload(request, bytes, whole);
}

// ---- the frame on the line --------------------------------------------------------------------

void takeHead()
{
    takeHeadFrame();
    ++driver.sendTurn;
}

// The cache is told how a write of the host ended.
void settleHead(int result)
{
    if (currentSendKind().settlesWrite) {
        const VARIABLE& request = driver.sendList.at(0).request;
        _write_FailOrSuc(request.stationNo, request.regName, request.address, request.length,
                         result);
    }
}

ReplyResult acceptReply(const QByteArray& reply, bool withData)
{
    const unsigned int turn = driver.sendTurn;
    if (withData) {
        driver.commFailed = 0;
        dealReadFrameReturnSaveData(reply);
    } else {
        settleHead(1);
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
    settleHead(0);
    if (driver.sendTurn == turn) {
        driver.sendList.clear();
        ++driver.sendTurn;
        driver.retryCount = 0;
        dealListWhenFinish();
    }
    return replyAbandoned;
}

} // namespace

void decodeReply(const QByteArray& reply, int count, int position, const VARIABLE& request)
{
    const int index = indexOfName(request.regName);
    if (index < 0) {
        return;
    }
    const RegisterType& type = registerType(index);
    const SendKindRow& kind = currentSendKind();
    if (kind.patchesRegisterBits && type.bitNamed && widthOf(type).isRegister) {
        if (driver.sendList.size() >= 2) {
            patchWriteBack(driver.sendList[1], reply, count, position, request);
        }
    } else if (kind.fillsRecipeBuffer) {
        decodeUpload(type, reply, count, position, request);
    } else {
        decodeValues(type, reply, count, position, request.stationNo, request.address);
    }
}

// The copy shares the bytes: the host may use its buffer again in the callback.
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
    const DriverCall call;
    if (driver.sendList.isEmpty()) {
        if (errorText != 0) {
            *errorText = QString::fromLatin1("");
        }
        return replyNothingOutstanding;
    }
    const QByteArray& received = reply != 0 ? *reply : nothingReceived;
    if (errorText != 0) {
        describeRequest(driver.sendList.at(0).request, received, *errorText);
    }
    const ReplyCheck check = checkReply(
        driver.sendList.at(0), reinterpret_cast<const unsigned char*>(received.constData()),
        static_cast<int>(received.size()));
    return check == replyRejected ? refuseReply() : acceptReply(received, check == replyWithData);
}
