// One request -> its frames, with the reply that each one expects.
#ifndef DOV417MODBUS_FRAME_BUILDING_H
#define DOV417MODBUS_FRAME_BUILDING_H

#include <QByteArray>
#include <QList>

#include "records.h"

// What one 1024-byte frame holds: 9 + 2n bytes for n words.
enum {
    maxFrameWords = 507
};

// reserveFrame() marks a frame whose memory may be used again: its sendLength becomes -1 - (bytes
// used before). A list that holds only such a frame counts as empty, and the first frame is built
// there.
void reserveFrame(FRAME_PRO& frame);
bool isReserved(const QList<FRAME_PRO>& frames);

// Each appends to the list it is handed. 1: a frame was appended, 0: refused. With `valuesAreThere`
// the reserved frame's request carries the values of this one already.
int frameRead(const VARIABLE& request, QList<FRAME_PRO>& frames, bool valuesAreThere = false);

// No frame, one, or two (a read and a write back for "R_bit").
void frameWrite(const VARIABLE& request, QList<FRAME_PRO>& frames);

// An empty frame that awaits no reply.
void frameHandshake(QList<FRAME_PRO>& frames);

// The write back of an "R_bit" write gets the registers as they are now, from the reply's data
// (`count` bytes at `position`), with the requested bits changed. Left alone if they do not fit.
void patchWriteBack(FRAME_PRO& writeBack, const QByteArray& reply, int count, int position,
                    const VARIABLE& request);

#endif
