// The data of a reply -> the cache, and the host is told what changed.
#ifndef DOV417MODBUS_DECODING_H
#define DOV417MODBUS_DECODING_H

#include <QByteArray>

#include "protocol/register_table.h"

// Unpacks `count` values into the cache by the type's unit width, from `position` of the reply on.
// What the reply does not have reads as 0. Ends early when a callback re-initialises the driver.
void decodeValues(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address);

// The same for units of one width.
void decodeWords(const RegisterType& type, const QByteArray& reply, int count, int position,
                 int station, int address);
void decodeDwords(const RegisterType& type, const QByteArray& reply, int count, int position,
                  int station, int address);
void decodeBytes(const RegisterType& type, const QByteArray& reply, int count, int position,
                 int station, int address);
void decodeBits(const RegisterType& type, const QByteArray& reply, int count, int position,
                int station, int address);
void decodeNothing(const RegisterType& type, const QByteArray& reply, int count, int position,
                   int station, int address);

#endif
