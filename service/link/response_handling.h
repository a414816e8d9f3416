// What came back: accept, retry or abandon; decode into the cache.
#ifndef DOV417MODBUS_RESPONSE_HANDLING_H
#define DOV417MODBUS_RESPONSE_HANDLING_H

#include <QByteArray>
#include <QList>
#include <QString>

#include "protocol/register_table.h"
#include "records.h"

// Describes the frame on the line: "1#R_W10(1)".
QString getErrorInfo(QByteArray reply);

// Length and CRC against what the frame on the line awaits: a ReplyCheck. The list is not used.
int check_rcv_data(unsigned char* reply, QList<VARIABLE> readList, int length);

// Decodes a good reply to the frame on the line. 0, always.
int dealReadFrameReturnSaveData(QByteArray reply);

void analyzeFrameOfVal(QByteArray reply, int count, int position, VARIABLE request);

// Unpacks `count` values into the cache by the type's unit width.
void decodeValues(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address);

// For replies that carry several requests. Nothing calls them.
int allMix_GetDataStartPosition(QByteArray reply, QList<VARIABLE> list, int n);
int allMix_GetRecvLenFromReadList(QList<VARIABLE> list);

#endif
