/**
 * @file intf.h
 * @brief The nineteen exported functions: the driver's contract with its host.
 *
 * @par Calling
 * All functions are exported by their plain names. Strings, lists and vectors are Qt objects of
 * the Qt generation that the library was built with. No function throws; the callback must not.
 *
 * @par Units
 * An address value is a bit number (word * 16 + bit) for the bit types "I_bit", "Q_bit", "M_bit"
 * and "R_bit", and a word number for all others; a length counts bits or 16-bit words alike. "R_D"
 * counts words too: two a value. Stations are 1 to 247; 0 is the broadcast, for writes only. The
 * ranges of the register types are what intf_getRegDiscription() says; only the editor's functions
 * check them. Lengths up to 65536 and any 32-bit address are handled without fault.
 *
 * @par Threads
 * The driver creates no thread. **Any function may be called from any thread at any time**, from
 * within the callback too. A call holds a lock of the library, which it lets go around the callback
 * and while it waits for the host's mutex or for `driver.mutex`: calls come one after the other,
 * and a callback may wait for a thread that calls the driver. What two threads write at the same
 * moment has the order in which they got in. The members of `driver` are for one thread at a time:
 * look at them while no other thread is in a call.
 *
 * | function | from another thread | from the callback | with either mutex held |
 * |---|---|---|---|
 * | identity, property page, callback; the editor's | yes | yes | yes |
 * | intf_initProperty() | yes | yes; ends the call that called back | yes |
 * | intf_addrMerge(), intf_addConditionRead() | yes | yes | yes |
 * | intf_setRcpAddress() | yes | yes | yes |
 * | intf_getData() | yes | yes | yes |
 * | intf_setData() | yes | yes | yes; bits not while holding `driver.mutex` |
 * | intf_getSendFrame(), intf_dealRcvFrame() | yes; a transaction at a time | yes | no |
 *
 * - The mutexes are the one given to intf_initProperty() and `driver.mutex`; "no": the call takes
 *   it itself. The driver holds neither during a callback.
 * - A frame is handed to every thread that polls, and a reply counts for the frame on the line: let
 *   one thread at a time poll, transmit and hand in. Nothing breaks otherwise, but requests are
 *   transmitted twice and replies taken for others.
 * - A poll frames no write of which another thread's intf_setData() has not returned, and nothing
 *   while another thread's reply is ending a request: it gives 0, or a read.
 * - A written value is in the cache once its announcement is over. Two threads that write to one
 *   place while the callback runs may leave the earlier value in the cache, until the place is read
 *   again; the controller gets the later one last.
 * - What intf_initProperty() and intf_setAddrValueChangeCallBack() replace stays in use by calls
 *   under way: keep block, buffer, mutex and callback until these have returned.
 * - Qt's message handler is called with the lock held. It may call the driver, but not wait for
 *   another thread that does.
 *
 * @par Pointers
 * The driver borrows every pointer and reference for the length of the call, except those of
 * intf_initProperty() and intf_setAddrValueChangeCallBack(), which must stay valid until they are
 * replaced and calls under way have returned, or the library is unloaded. It frees none. Null
 * result pointers are tolerated: nothing is stored there. What it returns or stores in the host's
 * objects belongs to the host and stays valid after the library is unloaded.
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

/**
 * @brief The driver's version.
 * @return four numbers joined by points, as in the name of the library's file; the caller's own.
 */
DOV417_EXPORT QString intf_getVersion();

/**
 * @brief The protocol type, by the host's convention.
 * @param[out] type receives 0, always.
 */
DOV417_EXPORT void intf_getProtocolType(int* type);

/**
 * @brief Default line parameters, name and register names.
 * @param[out] parameter receives, whatever it held,
 * "0,38400,8,EVEN,1,0,1,192.168.1.10,8000,dov417modbus,I_bit,...,C": 21 items joined by commas, in
 * this order: 0; baud rate, data bits, parity, stop bits; 0; 1; default network address and port;
 * protocol name; the eleven register names.
 */
DOV417_EXPORT void intf_getDriverParameter(QString& parameter);

/**
 * @brief The property page of the editor.
 * @param[out] page receives "0_0", always, whatever was set.
 */
DOV417_EXPORT void intf_getDriverPropertyPage(QString& page);

/**
 * @brief Keeps the editor's property page.
 * @param page any text; a copy is kept in `driver.propertyPage`, never interpreted.
 */
DOV417_EXPORT void intf_SetDriverPropertyPage(const QString& page);

/**
 * @brief Gives the driver the host's value-change function.
 * @param callBack called for every change of a watched view, on the thread and within the driver
 * call that found it. Null: nothing is announced. A call under way on another thread may still be
 * in the one before. Set it before the first poll.
 */
DOV417_EXPORT void intf_setAddrValueChangeCallBack(VALUE_CHANGE_CALLBACK callBack);

/**
 * @brief Configures the driver and resets it: every read, write, condition read, cached value and
 * prepared frame is dropped, counters and the mark of a failed link are cleared.
 *
 * May be called again at any time. Not affected: the callback, the recipe addresses, the property
 * page. The host hands in its addresses again (intf_addrMerge()).
 *
 * @param hostBlock host memory of at least 60117 bytes, or null. Byte 60115 = 1 asks for a
 * recipe download (buffer to controller), byte 60116 = 1 for an upload (::RecipeFlagOffset). The
 * driver clears the byte when the transfer has ended. Borrowed until the next call.
 * @param hostArg2 any value; stored for the host in `driver.hostArg2`, never read.
 * @param recipeBuffer the host's recipe values, 16-bit words; must cover every `bufOffset` + length
 * named in intf_setRcpAddress(), and the first `bufOffset` + joint length of records that are
 * neighbours in the controller. Null: no download is framed, an upload only fills the cache.
 * Borrowed until the next call.
 * @param[out] result  receives 0.
 * @param property     Latin-1 text, copied: five numbers separated by "#", for instance
 * "1#0#0#3#10". 1: tag, the callback's first argument and the link number of recipe records.
 * 2: not 0 = writes change only the cache. 3: spare. 4: retry limit, how many bad or missing
 * replies to a frame give its request up (below 2: the first one). 5: merge gap in words, the
 * largest hole that is read along, and also the maximum length of a piece of a write or condition
 * read (8 times that for bits; below 1: 123 words or 984 bits a piece, no hole is read along). With
 * fewer than five parts (or null) the earlier values stay; a part that is no number counts as 0.
 * @param hostMutex    held while the two flag bytes are read or cleared; null: no lock is taken.
 *                     Borrowed until the next call.
 * @return 1, always.
 */
DOV417_EXPORT int intf_initProperty(unsigned char* hostBlock, int hostArg2,
                                    unsigned short* recipeBuffer, int* result, const char* property,
                                    QMutex* hostMutex);
/// @}

/// @name Editor
/// @{

/**
 * @brief Is this address text valid for an item of this kind?
 *
 * Changes no state of the driver.
 *
 * @param regName     register type name.
 * @param text        address text in the type's format: "100", "12.5". Bit numbers above 15 and
 * signs are taken as they stand ("0.16" is bit 0 of word 1, "1.-5" bit 11 of word 0), and words
 * from 2^28 on go round: an editor that wants exact texts compares with the value.
 * @param[in,out] address receives the address value when the text converts, also when it is out of
 * range; 0 when it does not convert (left alone for the word.bit form); else left alone. Null: the
 * check is made all the same.
 * @param length      units from the address on, 1 or more ("R_D": 1 for a value on its own); a
 * smaller one is not refused.
 * @param wordFlag    0: a bit item, else a word item.
 * @return a ::CheckCode (0 to 4). An unknown name gives 3, or 2 when the value that `*address`
 * already holds is below 0 or its sum with `length` above 1.
 */
DOV417_EXPORT int intf_checkAddrValidity(QString regName, QString text, int* address, int length,
                                         int wordFlag);

/**
 * @brief Is this address text valid for this data type, length and access?
 *
 * Changes no state of the driver.
 *
 * @param regName     register type name.
 * @param text        address text in the type's format.
 * @param[in,out] address as in intf_checkAddrValidity().
 * @param dataType    -1: a bit item; any other: a word item, on "R_D" one of 1, 3, 5, 6 and 9.
 * @param length      units from the address on, as in intf_checkAddrValidity().
 * @param accessMode  1 or 2: a writing access; any other: a reading one.
 * @return a ::CheckCode (0 to 6).
 */
DOV417_EXPORT int intf_checkAddr(QString regName, QString text, int* address, int dataType,
                                 int length, int accessMode);

/**
 * @brief The register types of one kind.
 * @param kind     0: bit types; any other: word types.
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
 * @return 0, always.
 */
DOV417_EXPORT int intf_getRegDiscription(QString regName, QStringList* list);

/**
 * @brief A series of addresses for copies of one item.
 *
 * The lowest address is not checked; addresses above the highest become the highest.
 *
 * @param regName   register type name.
 * @param start     first address value, 0 or more (a bit number for bit types). Below 0 the texts
 * are no addresses, as numbers in them are unsigned.
 * @param count     number of copies; below 1: none.
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
 *
 * Cached values stay. Keys that touch, or leave a hole of at most the merge gap, become one request
 * of at most 128 words; bits are read by the words that hold them. A key with an unknown register
 * name or station 0 yields a request that is never framed and holds up those behind it: check
 * addresses first. Writes two debug lines a key and one a request.
 *
 * @param keys the host's addresses: `stationNo` 1 to 247, `regName`, `address`, `length` 1 or more;
 * all other fields are without effect. A length below 1 is planned as it stands: its request asks
 * for a number of words that no controller answers, and `replyLength` may be negative. Any number,
 * in any order; unchanged. Empty: nothing is read any more.
 * @return number of read requests in the plan.
 */
DOV417_EXPORT int intf_addrMerge(QList<KEY_ADDRESS>& keys);

/**
 * @brief Asks for a single read.
 *
 * When the read that was asked for last has ended, the callback is called with (-1, -1, "-1",
 * 0 or, when the link failed, -1). At most 513 reads wait; further ones replace the last of them.
 *
 * @param key  what to read: `stationNo` 1 to 247, `regName` of a word type, `address`, `length`;
 * cut into pieces of at most the merge gap. Unchanged. A bit type is taken but never framed, and
 * holds up the condition reads behind it: ask for the words that hold the bits.
 * @param kind any value; carried into the frames.
 * @return 1, or -1 for an unknown register name: nothing is queued.
 */
DOV417_EXPORT int intf_addConditionRead(KEY_ADDRESS& key, int kind);

/**
 * @brief Replaces the recipe plan.
 *
 * Neighbours in the controller become one request; their values must be neighbours in the buffer
 * too, as the request uses the first record's offset for all of them. Set a recipe flag in the host
 * block only after records were taken.
 *
 * A request whose first value would lie before the start of the buffer (a `bufOffset` below 0) is
 * not framed for a download: intf_getSendFrame() returns 0 until the host clears its flag. An
 * upload leaves out the values that have no place in the buffer.
 *
 * @param records addresses and buffer places, copied; those whose `linkId` is not the driver's tag
 * are ignored. Keep each to 1 to 128 units: pieces cut from a longer record all carry its own
 * buffer offset.
 * @return number of records taken.
 */
DOV417_EXPORT int intf_setRcpAddress(QVector<_RCP_VAR_PRO>& records);
/// @}

/// @name Link
/// @{

/**
 * @brief What to transmit next. The same frame is handed out until it is answered or abandoned.
 *
 * In this order: handshake (a frame of 0 bytes that awaits none, for as long as the host holds
 * `driver.handshakeRequest` at another value than 0; no controller of this family needs it); recipe
 * download; recipe upload; writes, at most 10 in a row; condition reads, while fewer than 3 writes
 * or condition reads went since the last cyclic read; cyclic reads in turn.
 *
 * @param[out] frame the host's; all of it is filled when the result is 1, nothing when it is 0.
 * Null: the frame is made and kept for the next call.
 * @return 1: transmit `frame->sendLength` bytes and collect `frame->replyLength`; 0: nothing to
 * send now (a request that cannot be framed also gives 0: poll again a little later).
 */
DOV417_EXPORT int intf_getSendFrame(FRAME_PRO* frame);

/**
 * @brief Takes what was received for the frame handed out last.
 *
 * Length and CRC decide; station and function code are the host's to look at before. An exception
 * reply is shorter than any awaited one and so a bad reply. Changed values are announced from
 * within.
 *
 * @param reply     received bytes, from the station number to the CRC; empty or null when nothing
 *                  came, also for a frame whose `replyLength` is 0. Never changed.
 * @param[out] errorText receives station, address and length of the frame whatever the result,
 * "1#R_W10(1)"; empty when none is outstanding. May be null.
 * @return a ::ReplyResult.
 */
DOV417_EXPORT int intf_dealRcvFrame(QByteArray* reply, QString* errorText);
/// @}

/// @name Cache
/// @{

/**
 * @brief Copies cached values. A value that the host wrote is visible at once.
 *
 * Never waits for the line. An address that was never received reads as 0; being read here does not
 * put it into the plan. May be called from within the callback.
 *
 * @param station  station number.
 * @param regName  register type name.
 * @param address  bit number for bit types, else word number.
 * @param length   bits for bit types, else 16-bit words ("R_D": two a value, an odd last word is
 *                 left out). Below 1: nothing is copied.
 * @param[out] out the host's: one byte a bit (0 or 1), or two bytes a word, low byte first. The
 *                 host provides enough of them; nothing is checked. "R_D": low word first.
 * @return 1, or -1 for an unknown register name.
 */
DOV417_EXPORT int intf_getData(int station, QString regName, int address, int length,
                               unsigned char* out);

/**
 * @brief Writes values: queues the requests and shows the values in the cache at once.
 *
 * Watched views that change are announced before the values are stored. The value stays visible
 * until the controller has accepted or the driver has given up the write. Views of a write that was
 * given up, and of bit writes either way, are announced again then. A write to the same place that
 * still waits is replaced. At most 513 writes wait; further ones replace the last of them.
 *
 * @par Threads
 * A bit that has a write under way already is counted under `driver.mutex`: bits are not for a
 * thread that holds it.
 *
 * @param station  station number, 0 to 247, of which the low 8 bits go out; 0 is the broadcast,
 * which nobody answers (not for "R_bit": never framed, and it holds up the writes behind it).
 * @param regName  register type name.
 * @param address  bit number for bit types, else word number.
 * @param length   bits for bit types, else 16-bit words. At most 1024 bits or 512 words; 0 is
 * queued as a write of nothing, which controllers refuse; below 0 nothing is queued. Cut into
 * pieces of at most the merge gap (8 times that for bits). Write bits of "I_bit", "Q_bit" and
 * "M_bit" one at a time: a run of them goes out without its area's base address.
 * @param data     one byte a bit (1 = set), or two bytes a word, low byte first; copied.
 * @param kind     any value; carried into the frames.
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
