#include "protocol/reply_check.h"

#include <climits>

#include "protocol.h"
#include "protocol/crc.h"

namespace {

enum {
    crcSize = 2,
    bytesPerWord = 2
};

// A read of negative length, or of so many words that the length of its reply went round, expects
// no reply that could exist.
bool mayBeAnswered(const FRAME_PRO& read)
{
    return read.dataCount >= 0 && read.dataCount <= INT_MAX / bytesPerWord;
}

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
    if (length != head.replyLength || length < crcSize || !mayBeAnswered(head)) {
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
