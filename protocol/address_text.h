// Address text <-> address value, register lookup, and the key by which requests are ordered.
#ifndef DOV417MODBUS_ADDRESS_TEXT_H
#define DOV417MODBUS_ADDRESS_TEXT_H

#include <QString>

// Index 0 to 10 in REG_LIST, -1 for an unknown name. Every poll asks indexOfName(), which does
// not copy its argument.
int getIndexFromRegName(QString regName);
int indexOfName(const QString& regName);

// The table's own copy of a name, so that it is found by its place; an unknown name as it is.
QString sharedRegName(const QString& regName);

// A number with blanks around it, if any: not every Qt takes the same characters for blanks.
int numberOf(const QString& text, bool& ok, int radix);

// "12.5" -> 197 on a bit register; -1 for a bad text, 0 on any other register.
int addr_str2int(QString text, QString regName);

// 197 -> "12.5" on a bit register; "" on any other register.
QString addr_int2str(int address, QString regName);

// Text of any register type to its value, by the type's format. 1 converted, -1 not.
int a2i(QString text, int& value, QString format, QString regName);

// The letter of a format: D 10, H 16, O 8, any other 0.
int radixOfLetter(QChar letter);

// "DDD.DD": a second, different character tells the word.bit form from a plain radix format.
bool isWordBitFormat(const QString& format);

// Where an area would be shifted against its address text; no area of this family is.
int addrOffset(QString regName, int address);

// Orders by station, then register type, then address; compare as unsigned. The type is at
// `typeIndex` of `typeCount` names, -1: it is none of them.
int weightAt(int typeCount, int station, int typeIndex, int address);

#endif
