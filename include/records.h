/**
 * @file records.h
 * @brief The records that cross the library's border, by layout.
 *
 * Host and driver exchange these records by their bytes, so both must be compiled against this
 * header and the same Qt generation. Every `int` is 32 bits wide and signed. The byte offsets
 * below are those of the 32-bit target, where a pointer and a `QString` are four bytes each; on
 * a 64-bit machine a `QString` takes eight bytes (24 with Qt 6) and is aligned to eight.
 *
 * All records are value types: copying one copies every field, the strings by reference count.
 * They have no constructors. Write `VARIABLE v = VARIABLE();` for one that is all zero.
 */
#ifndef DOV417MODBUS_RECORDS_H
#define DOV417MODBUS_RECORDS_H

#include <QString>
#include <cstddef>

/** @brief Size in bytes of every inline value buffer and of a frame. */
enum {
    recordDataSize = 1024
};

/**
 * @brief One address as the host hands it in, with the values to write where it is a write.
 *
 * | offset | field       | filled by                                                          |
 * |-------:|-------------|--------------------------------------------------------------------|
 * |      0 | `tag`       | host; carried unchanged                                            |
 * |      4 | `hostValue` | host; carried unchanged                                            |
 * |      8 | `userIndex` | host; carried unchanged. Recipe planning: buffer offset in words   |
 * |     12 | `stationNo` | host                                                               |
 * |     16 | `regName`   | host; a word register name after merging                           |
 * |     20 | `extText`   | host; carried unchanged                                            |
 * |     24 | `address`   | host                                                               |
 * |     28 | `bitFlag`   | host                                                               |
 * |     32 | `length`    | host                                                               |
 * |     36 | `data`      | host, for writes only                                              |
 */
struct KEY_ADDRESS {
    QString tag;     ///< Host text. A merged key keeps the text of the key that opened its run.
    int hostValue;   ///< Host value.
    int userIndex;   ///< Host value; for recipe keys the offset in the recipe buffer, in words.
    int stationNo;   ///< Modbus station (slave) number, 0 to 247; 0 is the broadcast.
    QString regName; ///< Register type name, one of the eleven: "I_bit" ... "C".
    QString extText; ///< Second host text.
    int address;     ///< First unit: a bit number for "_bit" types, else a word number.
    int bitFlag;     ///< -1: the values are bits, one byte each. Else 16-bit values, two bytes.
    int length;      ///< Number of units from `address` on.
    unsigned char data[recordDataSize]; ///< Values to write, 16-bit ones low byte first.
};

/**
 * @brief One request: what becomes one Modbus read or write, or one part of one.
 *
 * | offset | field       | filled by                                                          |
 * |-------:|-------------|--------------------------------------------------------------------|
 * |      0 | `kind`      | 4 for cyclic reads; else the caller's `kind` argument               |
 * |      4 | `stationNo` | planning, from the host's key                                       |
 * |      8 | `regName`   | planning, from the host's key                                       |
 * |     12 | `address`   | planning, from the host's key                                       |
 * |     16 | `length`    | planning, from the host's key                                       |
 * |     20 | `data`      | writes and recipe downloads: the values; else without meaning       |
 *
 * 1044 bytes where a `QString` has four bytes.
 */
struct VARIABLE {
    int kind;        ///< Origin of the request; the host sees it again in the frame.
    int stationNo;   ///< Modbus station number.
    QString regName; ///< Register type name (the area letter alone for bit condition reads).
    int address;     ///< Bit number for queued writes of "_bit" types, else a word number.
    int length;      ///< Bits for "_bit" types, else 16-bit registers ("R_D": two a value).
    unsigned char data[recordDataSize]; ///< Bits: one byte each. Words: low byte first.
};

/**
 * @brief One run of controller addresses of a recipe and its place in the recipe buffer.
 *
 * | offset | field       | filled by                                                          |
 * |-------:|-------------|--------------------------------------------------------------------|
 * |      0 | `linkId`    | host; only records that name this driver's tag are taken            |
 * |      4 | `stationNo` | host                                                               |
 * |      8 | `regName`   | host                                                               |
 * |     12 | `address`   | host                                                               |
 * |     16 | `length`    | host; at most 128 units, see intf_setRcpAddress()                   |
 * |     20 | `bufOffset` | host                                                               |
 * |     24 | `reserved`  | host; never read                                                   |
 */
struct _RCP_VAR_PRO {
    int linkId;      ///< Link number; must equal the first property field.
    int stationNo;   ///< Modbus station number.
    QString regName; ///< Register type name.
    int address;     ///< First unit, in units of the register type.
    int length;      ///< Number of units.
    int bufOffset;   ///< Place of the first value in the recipe buffer, in 16-bit words, from 0.
    int reserved;    ///< Carried, never read.
};

/**
 * @brief One frame ready to be transmitted; also the record that the host passes to be filled.
 *
 * | offset | field          | value                                                           |
 * |-------:|----------------|-----------------------------------------------------------------|
 * |      0 | `frame`        | the bytes to transmit, CRC included                              |
 * |   1024 | `sendLength`   | how many of them                                                 |
 * |   1028 | `replyLength`  | exact length of the expected reply, 0 = none is awaited          |
 * |   1032 | `dataPosition` | reads: 3; write half of an "R_bit" write: 7; else 0              |
 * |   1036 | `dataCount`    | reads: registers ("R_bit" pre-read: bytes); else 0               |
 * |   1040 | `spare`        | 0                                                               |
 * |   1044 | `request`      | the request that produced the frame                              |
 *
 * 2088 bytes where a `QString` has four bytes.
 */
struct FRAME_PRO {
    unsigned char frame[recordDataSize]; ///< Bytes to transmit from byte 0 on.
    int sendLength;                      ///< Number of bytes to transmit; 0: transmit nothing.
    int replyLength;                     ///< Expected reply length in bytes; 0: await none.
    int dataPosition;                    ///< Index of the first data byte, see above.
    int dataCount;                       ///< Amount of data in the reply, see above.
    int spare;                           ///< Unused.
    VARIABLE request;                    ///< Copy of the request.
};

/**
 * @brief One cached unit (a 16-bit controller word) of one area of one station.
 *
 * | offset | field          | value                                                           |
 * |-------:|----------------|-----------------------------------------------------------------|
 * |      0 | `spareFlag`    | 0                                                               |
 * |      1 | `writePending` | 1 while a host write is not settled                              |
 * |      4 | `pendingBits`  | two bits per bit of the unit: its unsettled bit writes           |
 * |      8 | `viewFlags`    | watched word and double-word views                               |
 * |     12 | `bitMonitor`   | watched bits                                                    |
 * |     16 | `station`      | Modbus station number                                           |
 * |     20 | `area`         | "I", "Q", "M", "R", "T" or "C"                                  |
 * |     24 | `address`      | word number                                                     |
 * |     28 | `deviceValue`  | bytes last received, low byte first                              |
 * |     32 | `pendingValue` | bytes last written by the host, low byte first                   |
 */
struct _DATA_ {
    unsigned char spareFlag;       ///< Unused.
    unsigned char writePending;    ///< 1: readers see `pendingValue`; 0: `deviceValue`.
    unsigned int pendingBits;      ///< Bits 2k and 2k+1 count the pending writes of bit k.
    int viewFlags;                 ///< Bit 0: own width; 1 and 2: first, second word of a "_D".
    unsigned int bitMonitor;       ///< Bit k: bit k of the unit is watched.
    int station;                   ///< Modbus station number.
    QString area;                  ///< Register name up to its first "_".
    int address;                   ///< Address in units.
    unsigned char deviceValue[4];  ///< As last received; a 16-bit unit uses two bytes.
    unsigned char pendingValue[4]; ///< As last written; laid out alike.
};

/**
 * @brief The layout is the contract: what the compiler laid out is compared with these columns.
 *
 * Columns: 32-bit (a QString is one pointer of four bytes), 64-bit with Qt 4 or 5 (one pointer
 * of eight bytes), 64-bit with Qt 6 (a QString is three words).
 */
#define DOV417_LAYOUT(actual, bytes32, bytes64, bytes64Qt6)                                        \
    static_assert((sizeof(void*) == 4 && sizeof(QString) == 4)    ? (actual) == (bytes32)          \
                  : (sizeof(void*) == 8 && sizeof(QString) == 8)  ? (actual) == (bytes64)          \
                  : (sizeof(void*) == 8 && sizeof(QString) == 24) ? (actual) == (bytes64Qt6)       \
                                                                  : true,                          \
                  "record layout: " #actual)

DOV417_LAYOUT(offsetof(KEY_ADDRESS, tag), 0, 0, 0);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, hostValue), 4, 8, 24);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, userIndex), 8, 12, 28);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, stationNo), 12, 16, 32);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, regName), 16, 24, 40);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, extText), 20, 32, 64);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, address), 24, 40, 88);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, bitFlag), 28, 44, 92);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, length), 32, 48, 96);
DOV417_LAYOUT(offsetof(KEY_ADDRESS, data), 36, 52, 100);
DOV417_LAYOUT(sizeof(KEY_ADDRESS), 1060, 1080, 1128);

DOV417_LAYOUT(offsetof(VARIABLE, kind), 0, 0, 0);
DOV417_LAYOUT(offsetof(VARIABLE, stationNo), 4, 4, 4);
DOV417_LAYOUT(offsetof(VARIABLE, regName), 8, 8, 8);
DOV417_LAYOUT(offsetof(VARIABLE, address), 12, 16, 32);
DOV417_LAYOUT(offsetof(VARIABLE, length), 16, 20, 36);
DOV417_LAYOUT(offsetof(VARIABLE, data), 20, 24, 40);
DOV417_LAYOUT(sizeof(VARIABLE), 1044, 1048, 1064);

DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, linkId), 0, 0, 0);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, stationNo), 4, 4, 4);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, regName), 8, 8, 8);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, address), 12, 16, 32);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, length), 16, 20, 36);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, bufOffset), 20, 24, 40);
DOV417_LAYOUT(offsetof(_RCP_VAR_PRO, reserved), 24, 28, 44);
DOV417_LAYOUT(sizeof(_RCP_VAR_PRO), 28, 32, 48);

DOV417_LAYOUT(offsetof(FRAME_PRO, frame), 0, 0, 0);
DOV417_LAYOUT(offsetof(FRAME_PRO, sendLength), 1024, 1024, 1024);
DOV417_LAYOUT(offsetof(FRAME_PRO, replyLength), 1028, 1028, 1028);
DOV417_LAYOUT(offsetof(FRAME_PRO, dataPosition), 1032, 1032, 1032);
DOV417_LAYOUT(offsetof(FRAME_PRO, dataCount), 1036, 1036, 1036);
DOV417_LAYOUT(offsetof(FRAME_PRO, spare), 1040, 1040, 1040);
DOV417_LAYOUT(offsetof(FRAME_PRO, request), 1044, 1048, 1048);
DOV417_LAYOUT(sizeof(FRAME_PRO), 2088, 2096, 2112);

DOV417_LAYOUT(offsetof(_DATA_, spareFlag), 0, 0, 0);
DOV417_LAYOUT(offsetof(_DATA_, writePending), 1, 1, 1);
DOV417_LAYOUT(offsetof(_DATA_, pendingBits), 4, 4, 4);
DOV417_LAYOUT(offsetof(_DATA_, viewFlags), 8, 8, 8);
DOV417_LAYOUT(offsetof(_DATA_, bitMonitor), 12, 12, 12);
DOV417_LAYOUT(offsetof(_DATA_, station), 16, 16, 16);
DOV417_LAYOUT(offsetof(_DATA_, area), 20, 24, 24);
DOV417_LAYOUT(offsetof(_DATA_, address), 24, 32, 48);
DOV417_LAYOUT(offsetof(_DATA_, deviceValue), 28, 36, 52);
DOV417_LAYOUT(offsetof(_DATA_, pendingValue), 32, 40, 56);
DOV417_LAYOUT(sizeof(_DATA_), 36, 48, 64);

#undef DOV417_LAYOUT

#endif
