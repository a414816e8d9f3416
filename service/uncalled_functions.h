// Functions that nothing in this driver calls: of its inner interface, not exported, kept under
// their names and with their arguments. What the driver uses in their place stands with each.
#ifndef DOV417MODBUS_UNCALLED_FUNCTIONS_H
#define DOV417MODBUS_UNCALLED_FUNCTIONS_H

#include <QByteArray>
#include <QList>
#include <QString>

#include "records.h"

// Two hexadecimal characters to a byte. Frames are binary: none is read so.
unsigned char asc2hex(QByteArray text, int position);

// May two keys not be read by one request? 1: keep apart, 0: may join. `useGap` 0: only what
// touches joins. Planning asks keepApart(), for runs.
int judgeAddrMerge(KEY_ADDRESS a, KEY_ADDRESS b, int useGap);

// planRuns() for keys with all that they carry: a merged key keeps what its opener had.
void addrMerge(QList<KEY_ADDRESS>& keys, int mode);

// Cuts a key into pieces of at most maxLen units, appended to `out`; below 1: the Modbus protocol's
// limit. With `withData` 1 each piece has its part of the key's values, else all of them. A piece
// takes a kilobyte: queueWrite() and condition reads make their requests where they are queued.
void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData);

// Index of the unit's record in a list, created at its end if it is missing. The driver looks into
// its own list with unitIndexOf().
int getIndexOfDataArea(int station, QString area, int address, QList<_DATA_>& list);

// weightAt() in the order of driver.regNames; the last argument is not used. Sorting weighs with a
// WeightScale.
int getRegAddressWeight(int station, QString regName, int address, int unused);

// Stores a host write as pending and announces what it changes. intf_setData() has looked the name
// up when it comes to storeWrite().
void write_saveDataToArea(int station, QString regName, int address, int length,
                          unsigned char* data);

// A read frame of element 0 of the list, appended to driver.sendList; 1: appended, 0: refused. The
// driver asks frameRead(), which copies no list.
int getReadFrame(QList<VARIABLE> list);

// checkReply() for the frame on the line: a ReplyCheck. The list is not used.
int check_rcv_data(unsigned char* reply, QList<VARIABLE> readList, int length);

// describeRequest() for the frame on the line, into a text of its own. Empty where there is none.
QString getErrorInfo(QByteArray reply);

// decodeReply() with copies of its arguments.
void analyzeFrameOfVal(QByteArray reply, int count, int position, VARIABLE request);

// For replies that carry several requests. No request of this driver is answered so: the place of
// the data is known when the frame is built.
int allMix_GetDataStartPosition(QByteArray reply, QList<VARIABLE> list, int n);
int allMix_GetRecvLenFromReadList(QList<VARIABLE> list);

#endif
