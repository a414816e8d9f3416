// What goes on the line next.
#ifndef DOV417MODBUS_SEND_SCHEDULING_H
#define DOV417MODBUS_SEND_SCHEDULING_H

#include <QList>

#include "records.h"

enum {
    maxWriteBurst = 10,   // writes in a row before a cyclic read has its turn
    maxConditionBurst = 3 // no condition read once so many writes and condition reads went
};

// What the driver does with a request of one kind.
struct SendKindRow {
    void (*frame)();          // frames driver.currentVar
    void (*finish)();         // once it is answered or given up: moves its list on
    int recipeFlag;           // byte of the host block that asks for it, 0: none
    bool settlesWrite;        // the cache is told how it ended
    bool patchesRegisterBits; // a read of "R_bit" registers is the first half of a write
    bool fillsRecipeBuffer;   // values read go to the host's buffer too
};

// Of driver.sendKind, whatever stands there: a number that is no kind counts as idle.
const SendKindRow& currentSendKind();

// The frames of a request, appended to driver.sendList.
void getWriteFrame(VARIABLE& request);
void handShakeFrame();

// The frame on the line leaves driver.sendList.
void takeHeadFrame();

// Advances the work lists once the frames of a request are answered or given up.
void dealListWhenFinish();

#endif
