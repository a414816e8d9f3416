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

// Length and CRC only: controllers of this family are known to answer under another station.
int check_rcv_data(unsigned char* reply, QList<VARIABLE> readList, int length);

#endif
