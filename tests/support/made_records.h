// Bytes and records as tests write them down: hex, and one line a record; a CRC of their own.
// Without the driver, so that the protocol's tests need nothing else.
#ifndef DOV417_TESTS_MADE_RECORDS_H
#define DOV417_TESTS_MADE_RECORDS_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>
#include <string>
#include <vector>

#include "records.h"

// CRC-16/MODBUS, bit by bit.
unsigned int bitwiseCrc(const unsigned char* bytes, int length);

// "01 03 02 00 07" -> bytes. withCrc appends the CRC, made bit by bit, not by the driver.
QByteArray hex(const char* text);
QByteArray withCrc(const char* text);
QByteArray withCrc(const QByteArray& bytes);
std::string toHex(const QByteArray& bytes);
std::string toHex(const unsigned char* bytes, int length);
// The bytes to transmit of a prepared frame, as hex.
std::string frameHex(const FRAME_PRO& frame);

// The frame of these bytes with its CRC, as hex.
std::string frame(const char* bytes);

// "00 01" three times: "00 01 00 01 00 01".
std::string repeated(const char* bytes, int count);

std::string text(const QString& string);
QString name(const char* latin1);

KEY_ADDRESS key(const char* regName, int address, int length, int station = 1, int bitFlag = 0);
VARIABLE request(const char* regName, int address, int length, int station = 1,
                 const std::vector<int>& data = {});
_RCP_VAR_PRO recipeRecord(int linkId, const char* regName, int address, int length, int bufOffset,
                          int station = 1);

// What a result holds as long as nobody stores one.
const int untouched = 4711;
// Characters of a text that no host would hand in.
const int million = 1000000;

// "1/R_W:10+5" for each request, to compare plans at a glance.
std::string summary(const VARIABLE& one);
std::string summary(const KEY_ADDRESS& one);
std::vector<std::string> summary(const QList<VARIABLE>& list);
std::vector<std::string> summary(const QList<KEY_ADDRESS>& list);
std::vector<std::string> summary(const QVector<_RCP_VAR_PRO>& list);

#endif
