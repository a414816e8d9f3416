/**
 * @file intf.h
 * @brief The nineteen exported functions: the driver's contract with its host.
 *
 * @par Calling
 * All functions are exported by their plain names. Strings, lists and vectors are Qt objects of
 * the Qt generation that the library was built with. No function throws.
 *
 * @par Threads
 * The driver creates no thread and locks almost nothing: **one driver call at a time**, from
 * whatever thread. intf_setData() may come from a second thread while the first one polls, as far
 * as the pending write list is concerned: `driver.mutex` guards the removal of its head; the cache
 * itself is not locked. The host's mutex is held only while the two recipe flags are read or
 * cleared; never during a callback.
 *
 * @par Pointers
 * The driver borrows every pointer for the length of the call, except those of intf_initProperty()
 * and intf_setAddrValueChangeCallBack(), which must stay valid until they are replaced or the
 * library is unloaded. It frees none. Null result pointers are tolerated: nothing is stored there.
 */
#ifndef DOV417MODBUS_INTF_H
#define DOV417MODBUS_INTF_H

#include <QByteArray>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include "protocol.h"
#include "records.h"

/** @brief Results of intf_checkAddr() and intf_checkAddrValidity(). */
enum CheckCode {
    checkValid = 0,      ///< Valid; the address has been stored.
    checkWrongKind = 1,  ///< A bit item on a word type or a word item on a bit type.
    checkOutOfRange = 2, ///< Below the lowest address, or running past the highest.
    checkUnknown = 3,    ///< Unknown register name.
    checkBadText = 4,    ///< The text is no address in the type's format.
    checkBadType = 5,    ///< The data type is not allowed on a 32-bit register type.
    checkReadOnly = 6    ///< A write access on a read-only register type.
};

/** @brief Results of intf_dealRcvFrame(). */
enum ReplyResult {
    replyNothingOutstanding = 0, ///< No frame was awaiting a reply.
    replyAccepted = 1,           ///< Accepted; poll for the next frame.
    replyAbandoned = 2,          ///< Bad, and the retry limit is reached: request given up.
    replyBad = 8                 ///< Bad; the same frame is handed out again.
};

// The functions that return a QString by value have C names but not a C result; every caller is
// C++ built against the same Qt.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

/// @name Identity and configuration
/// @{

/** @brief The driver's version. @return "2.0.0.0"; the caller owns the text. */
DOV417_EXPORT QString intf_getVersion();

/** @brief The protocol type. @param[out] type receives 0. */
DOV417_EXPORT void intf_getProtocolType(int* type);

/**
 * @brief Default line parameters, name and register names.
 * @param[out] parameter receives "0,38400,8,EVEN,1,0,1,ADDRESS,8000,dov417modbus,I_bit,...,C":
 * 21 items joined by commas, in this order: 0; baud rate, data bits, parity, stop bits; 0; 1;
 * default network address and port; protocol name; the eleven register names.
 */
DOV417_EXPORT void intf_getDriverParameter(QString& parameter);

/** @brief The property page of the editor. @param[out] page receives "0_0", always. */
DOV417_EXPORT void intf_getDriverPropertyPage(QString& page);

/** @brief Keeps the editor's property page. @param page any text; kept, never interpreted. */
DOV417_EXPORT void intf_SetDriverPropertyPage(const QString& page);

/**
 * @brief Gives the driver the host's value-change function.
 * @param callBack borrowed; null: nothing is announced. Must be set before the first poll.
 */
DOV417_EXPORT void intf_setAddrValueChangeCallBack(VALUE_CHANGE_CALLBACK callBack);

/**
 * @brief Configures the driver and resets it: every read, write, condition read, cached value and
 * prepared frame is dropped. Recipe addresses stay.
 *
 * @param hostBlock    host memory of at least 60117 bytes, or null. Byte 60115 = 1 asks for a
 * recipe download (buffer to controller), byte 60116 = 1 for an upload. The driver clears the byte
 * when the transfer has ended. Borrowed until the next call.
 * @param hostArg2     stored for the host.
 * @param recipeBuffer the host's recipe values, 16-bit words; must cover every `bufOffset` + length
 *                     named in intf_setRcpAddress(). Null: no download is framed, an upload only
 *                     fills the cache. Borrowed until the next call.
 * @param[out] result  receives 0.
 * @param property     five numbers separated by "#": tag, cache-only flag, spare, retry limit,
 * merge gap in words, for instance "1#0#0#3#10". With fewer than five parts (or null) the earlier
 * values stay; a part that is no number counts as 0.
 * @param hostMutex    held while the two flag bytes are read or cleared; null: no lock is taken.
 *                     Borrowed until the next call.
 * @return 1.
 */
DOV417_EXPORT int intf_initProperty(unsigned char* hostBlock, int hostArg2,
                                    unsigned short* recipeBuffer, int* result, const char* property,
                                    QMutex* hostMutex);
/// @}

/// @name Editor
/// @{

/**
 * @brief Is this address text valid for an item of this kind?
 * @param regName     register type name.
 * @param text        address text in the type's format: "100", "12.5".
 * @param[in,out] address receives the address value when the text converts.
 * @param length      units from the address on.
 * @param wordFlag    0: a bit item, else a word item.
 * @return a ::CheckCode (0 to 4). An unknown name gives 3, or 2 when the value that `*address`
 * already holds is below 0 or its sum with `length` above 1.
 */
DOV417_EXPORT int intf_checkAddrValidity(QString regName, QString text, int* address, int length,
                                         int wordFlag);

/**
 * @brief Is this address text valid for this data type, length and access?
 * @param regName     register type name.
 * @param text        address text in the type's format.
 * @param[in,out] address receives the address value when the text converts.
 * @param dataType    -1: a bit item; on "R_D" one of 1, 3, 5, 6, 9.
 * @param length      units from the address on ("R_D": words).
 * @param accessMode  1 or 2: a writing access.
 * @return a ::CheckCode (0 to 6).
 */
DOV417_EXPORT int intf_checkAddr(QString regName, QString text, int* address, int dataType,
                                 int length, int accessMode);

/**
 * @brief The register types of one kind.
 * @param kind     0: bit types; else word types.
 * @param[out] list the names are appended in table order; not cleared first.
 * @return 1 for kind 0 or 1, else 0 (the word types are appended all the same).
 */
DOV417_EXPORT int intf_getRegListByType(int kind, QStringList* list);

/**
 * @brief Describes a register type.
 * @param regName  register type name.
 * @param[out] list receives five texts: address format, lowest, highest address, width code ("0"
 * bit, "1" word, "2" double word), access code ("0" read, "1" read and write, "2" write). Not
 * cleared first; an unknown name appends nothing.
 * @return 0.
 */
DOV417_EXPORT int intf_getRegDiscription(QString regName, QStringList* list);

/**
 * @brief A series of addresses for copies of one item.
 * @param regName   register type name.
 * @param start     first address value (a bit number for bit types).
 * @param count     number of copies.
 * @param step      distance of two copies; -1: one 16-bit unit, -2: one 32-bit value; below 1: 1.
 * @param[out] texts     address texts, appended.
 * @param[out] addresses address values, appended in step with `texts`.
 * @return 0 unknown name, 1 every copy within range, 2 some clipped at the highest address.
 */
DOV417_EXPORT int intf_multiCopy(QString regName, int start, int count, int step,
                                 QVector<QString>& texts, QVector<int>& addresses);
/// @}

/// @name Planning
/// @{

/**
 * @brief Replaces the cyclic reads by a plan for these addresses and watches exactly them.
 * @param keys the host's addresses (`stationNo`, `regName`, `address`, `length`); unchanged.
 * @return number of read requests in the plan.
 */
DOV417_EXPORT int intf_addrMerge(QList<KEY_ADDRESS>& keys);

/**
 * @brief Asks for a single read.
 * @param key  what to read; cut into pieces of at most the merge gap (8 times that for bits).
 * @param kind carried into the frames.
 * @return 1, or -1 for an unknown register name.
 */
DOV417_EXPORT int intf_addConditionRead(KEY_ADDRESS& key, int kind);

/**
 * @brief Replaces the recipe plan.
 * @param records addresses and buffer places; those of other links are ignored. Keep each within
 * 128 units: pieces cut from a longer record all carry its own buffer offset.
 * @return number of records taken.
 */
DOV417_EXPORT int intf_setRcpAddress(QVector<_RCP_VAR_PRO>& records);
/// @}

/// @name Link
/// @{

/**
 * @brief What to transmit next. The same frame is handed out until it is answered or abandoned.
 * @param[out] frame owned by the host; filled when the result is 1.
 * @return 1: transmit `frame->sendLength` bytes and collect `frame->replyLength`; 0: nothing to
 * send now (a request that cannot be framed also gives 0: poll again a little later).
 */
DOV417_EXPORT int intf_getSendFrame(FRAME_PRO* frame);

/**
 * @brief Takes what was received for the frame handed out last.
 * @param reply     received bytes, from the station number to the CRC; empty or null when nothing
 *                  came. Never changed.
 * @param[out] errorText describes the frame whatever the result: "1#R_W10(1)".
 * @return a ::ReplyResult.
 */
DOV417_EXPORT int intf_dealRcvFrame(QByteArray* reply, QString* errorText);
/// @}

/// @name Cache
/// @{

/**
 * @brief Copies cached values. A value that the host wrote is visible at once.
 * @param station  station number.
 * @param regName  register type name.
 * @param address  bit number for bit types, else word number.
 * @param length   bits for bit types, else 16-bit words ("R_D": two a value).
 * @param[out] out one byte a bit (0 or 1), or two bytes a word, low byte first. The host provides
 *                 enough of them; nothing is checked.
 * @return 1, or -1 for an unknown register name.
 */
DOV417_EXPORT int intf_getData(int station, QString regName, int address, int length,
                               unsigned char* out);

/**
 * @brief Writes values: queues the requests and shows the values in the cache at once.
 * @param station  station number; 0 is the broadcast (not for "R_bit").
 * @param regName  register type name.
 * @param address  bit number for bit types, else word number.
 * @param length   bits for bit types, else 16-bit words. At most 1024 bits or 512 words.
 * @param data     one byte a bit (1 = set), or two bytes a word, low byte first; copied.
 * @param kind     carried into the frames.
 * @return 1 queued (or stored, in cache-only mode); -1 unknown register name or too long: nothing
 * changed.
 */
DOV417_EXPORT int intf_setData(int station, QString regName, int address, int length,
                               unsigned char* data, int kind);
/// @}

} // extern "C"

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#endif
