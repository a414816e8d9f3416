// What goes on the line next.
#ifndef DOV417MODBUS_SEND_SCHEDULING_H
#define DOV417MODBUS_SEND_SCHEDULING_H

#include <QList>

#include "records.h"

enum SendKind {
    sendIdle = 0,
    sendHandshake = 1,
    sendWrite = 2,
    sendConditionRead = 3,
    sendCyclicRead = 4,
    sendRecipeDownload = 5,
    sendRecipeUpload = 6
};

enum {
    maxWriteBurst = 10,    // writes in a row before a cyclic read has its turn
    maxConditionBurst = 3, // no condition read once so many writes and condition reads went
    downloadFlagOffset = 60115,
    uploadFlagOffset = 60116
};

// The frames of a request, appended to driver.sendList. Element 0 of the list is read; 1: a frame
// was appended, 0: refused.
int getReadFrame(QList<VARIABLE> list);
void getWriteFrame(VARIABLE& request);
void handShakeFrame();

// Advances the work lists once the frames of a request are answered or given up.
void dealListWhenFinish();

#endif
