// Is this reply the one that a frame awaits?
#ifndef DOV417MODBUS_REPLY_CHECK_H
#define DOV417MODBUS_REPLY_CHECK_H

#include "records.h"

enum ReplyCheck {
    replyRejected = 0,
    replyWithData = 1,
    replyWithoutData = 2
};

// Length and CRC only. Station and function are the host's to look at, who sees the line.
ReplyCheck checkReply(const FRAME_PRO& awaiting, const unsigned char* reply, int length);

#endif
