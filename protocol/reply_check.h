// Is this reply the one that the frame on the line awaits?
#ifndef DOV417MODBUS_REPLY_CHECK_H
#define DOV417MODBUS_REPLY_CHECK_H

#include <QList>

#include "records.h"

enum ReplyCheck {
    replyRejected = 0,
    replyWithData = 1,
    replyWithoutData = 2
};

// Length and CRC only. Station and function are the host's to look at, who sees the line.
ReplyCheck checkReply(const unsigned char* reply, int length);

// The same; the list is not used.
int check_rcv_data(unsigned char* reply, QList<VARIABLE> readList, int length);

#endif
