#include "reply_check.h"

#include "crc.h"
#include "protocol.h"

namespace {

enum {
    crcSize = 2
};

} // namespace

ReplyCheck checkReply(const unsigned char* reply, int length)
{
    if (driver.sendList.isEmpty()) {
        return replyRejected;
    }
    const FRAME_PRO& head = driver.sendList.at(0);
    if (length == 0 && head.replyLength == 0) {
        return replyWithoutData; // broadcast, handshake: nothing was awaited
    }
    // A read of negative length expects no reply that could exist.
    if (length != head.replyLength || length < crcSize || head.dataCount < 0) {
        return replyRejected;
    }
    const unsigned int crc = crcOf(reply, length - crcSize);
    if (reply[length - 1] != crc >> 8 || reply[length - 2] != (crc & 0xFFu)) {
        return replyRejected;
    }
    return head.dataCount != 0 ? replyWithData : replyWithoutData;
}

int check_rcv_data(unsigned char* reply, QList<VARIABLE>, int length)
{
    return checkReply(reply, length);
}
