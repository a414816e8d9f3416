// One request -> the frames of the send list, with the reply that each one expects.
#ifndef DOV417MODBUS_FRAME_BUILDING_H
#define DOV417MODBUS_FRAME_BUILDING_H

#include <QByteArray>
#include <QList>

#include "records.h"

// What one 1024-byte frame holds: 9 + 2n bytes for n words.
enum {
    maxFrameWords = 507
};

// Frames element 0 of the list. 1: a frame was appended, 0: refused.
int getReadFrame(QList<VARIABLE> list);
int frameRead(const VARIABLE& request);

// Appends no frame, one, or two (a read and a write back for "R_bit").
void getWriteFrame(VARIABLE& request);

// Appends an empty frame that awaits no reply.
void handShakeFrame();

int uchar2int16(unsigned char low, unsigned char high);
int uchar2int32(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3);

// Two hexadecimal characters to a byte. Nothing calls it; hosts link against its presence.
unsigned char asc2hex(QByteArray text, int position);

#endif
