#include "protocol/reply_check.h"

#include <climits>

#include "protocol/crc.h"

namespace {

enum {
    bytesPerWord = 2
};

// A read of negative length, or of so many words that the length of its reply went round, expects
// no reply that could exist.
bool mayBeAnswered(const FRAME_PRO& read)
{
    return read.dataCount >= 0 && read.dataCount <= INT_MAX / bytesPerWord;
}

} // namespace

ReplyCheck checkReply(const FRAME_PRO& awaiting, const unsigned char* reply, int length)
{
    if (length == 0 && awaiting.replyLength == 0) {
        return replyWithoutData; // broadcast, handshake: nothing was awaited
    }
    if (length != awaiting.replyLength || length < crcSize || !mayBeAnswered(awaiting)) {
        return replyRejected;
    }
    const unsigned int crc = crcOf(reply, length - crcSize);
    if (reply[length - 1] != crc >> 8 || reply[length - 2] != (crc & 0xFFu)) {
        return replyRejected;
    }
    return awaiting.dataCount != 0 ? replyWithData : replyWithoutData;
}
