/**
 * @file protocol.h
 * @brief The driver's whole mutable state: class Protocol and its one object, `driver`.
 *
 * The exported functions of intf.h read and change `driver` directly; there is no handle and no
 * second instance. A host normally needs nothing of this header. Tests and diagnostic hosts may
 * look at the members, clear or fill the lists: the driver notices it.
 *
 * @warning Read the lists with `at()`. A reference from a list's non-const operator is good only
 * until the next call of the driver, as the driver shares its list with its own index.
 *
 * @par Threads
 * Functions may be called from any thread, as intf.h says. The members are for one thread at a
 * time: no other thread may be in a call while they are looked at or changed. `mutex` alone does
 * not make that safe.
 */
#ifndef DOV417MODBUS_PROTOCOL_H
#define DOV417MODBUS_PROTOCOL_H

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include "records.h"

#if defined(__GNUC__)
#define DOV417_EXPORT __attribute__((visibility("default")))
#else
#define DOV417_EXPORT
#endif

/**
 * @brief The host's value-change function.
 *
 * Called synchronously, on the thread of the driver call that found the change, with no lock of the
 * driver held: it may wait for another thread that calls the driver, and two threads may be in it
 * at once. It may call every exported function that its thread may (the table in intf.h). It should
 * leave writing, planning, polling and re-initialising to a later moment: none of them breaks
 * anything, but what they change may be changed again by the call in progress. It must not throw:
 * the call would end half done.
 *
 * @param tag      first property field; 0 for a recipe item, -1 for a served condition read.
 * @param station  station number; -1 for a recipe item and a served condition read.
 * @param regName  view that changed: "M_bit", "R_W", "R_D", "T"...; "RWI" for a recipe item, "-1"
 *                 for a served condition read. The text is a copy made for this call: it may be
 *                 kept or changed, and stays valid after the library is unloaded.
 * @param address  address of the view: bit number (word * 16 + bit) or word number; the word index
 *                 in the recipe buffer for a recipe item; for a condition read 0 when it succeeded
 *                 and -1 when it failed.
 */
typedef void (*VALUE_CHANGE_CALLBACK)(int tag, int station, QString& regName, int address);

/** @brief What the request in progress, or the one before it, is for: `driver.sendKind`. */
enum SendKind {
    sendIdle = 0,           ///< Nothing was to be sent.
    sendHandshake = 1,      ///< An empty frame.
    sendWrite = 2,          ///< The head of `driver.writeList`.
    sendConditionRead = 3,  ///< The head of `driver.conditionList`.
    sendCyclicRead = 4,     ///< The head of `driver.readList`.
    sendRecipeDownload = 5, ///< A write of a merged recipe request.
    sendRecipeUpload = 6    ///< A read of a merged recipe request.
};

/** @brief Places in the host block of the bytes that ask for a recipe transfer while they are 1. */
enum RecipeFlagOffset {
    downloadFlagOffset = 60115, ///< Recipe buffer to controller.
    uploadFlagOffset = 60116    ///< Controller to recipe buffer.
};

struct Shortcuts;

/**
 * @brief All state of the driver. Members in the order that hosts rely on.
 *
 * Owned by the driver: every list and text. Borrowed from the host and never freed: `hostBlock`,
 * `recipeBuffer`, `hostMutex`, the callback.
 */
class DOV417_EXPORT Protocol {
public:
    Protocol();
    ~Protocol();

    VALUE_CHANGE_CALLBACK valueChangeCallBack; ///< Host function, null until it is set.
    int callBackTag;          ///< Property field 1: first argument of data notifications.
    int writeToCacheOnly;     ///< Property field 2: not 0 = writes change only the cache.
    int propertyField3;       ///< Property field 3: stored for the host.
    int retryLimit;           ///< Property field 4: bad replies until a request is abandoned.
    int mergeGap;             ///< Property field 5: largest hole, in words, that merging bridges.
    unsigned char* hostBlock; ///< Host memory with the two request flags, ::RecipeFlagOffset.
    int hostArg2;             ///< Host value, stored for the host.
    unsigned short* recipeBuffer;         ///< Host's recipe words.
    QMutex* hostMutex;                    ///< Guards `hostBlock`.
    QList<VARIABLE> readList;             ///< Cyclic reads; element 0 is next.
    QList<VARIABLE> writeList;            ///< Pending writes; element 0 is next.
    QList<VARIABLE> conditionList;        ///< Condition reads; element 0 is next.
    QList<_DATA_> dataAreas;              ///< The cache, in order of creation.
    QVector<_RCP_VAR_PRO> recipeVars;     ///< Recipe records taken, sorted.
    QVector<_RCP_VAR_PRO> recipeRequests; ///< Merged recipe requests.
    QList<int> groupStarts;               ///< Index of the record that opened each recipe run.
    VARIABLE lastConditionVar;            ///< Condition read added last.
    QStringList regNames;                 ///< The eleven register names.
    VARIABLE currentVar;                  ///< Request being framed.
    QList<VARIABLE> currentVars;          ///< Requests of the read framed last.
    int sendKind;                         ///< A ::SendKind.
    int burstCount;            ///< Writes and condition reads since the last cyclic read.
    int handshakeRequest;      ///< Not 0: the next idle poll frames a handshake.
    int retryCount;            ///< Bad replies in a row to the frame on the line.
    int pieceBitLimit;         ///< `mergeGap` * 8: maximum of one piece, in bits.
    int pieceWordLimit;        ///< `mergeGap`: maximum of one piece, in words.
    int commFailed;            ///< 1 after a request was abandoned, 0 after a good reply.
    int frameIndex;            ///< Always 0, kept for the layout.
    int initDone;              ///< 1 once intf_initProperty() ran.
    QList<FRAME_PRO> sendList; ///< Frames of the request in progress; element 0 is on the line.
    QMutex mutex;              ///< Held while the first write leaves, or equal ones are counted.
    int recipeIndex;           ///< Next element of `recipeRequests`.
    QString propertyPage;      ///< Text last given to intf_SetDriverPropertyPage().
    QList<int> spareList;      ///< Unused, kept for the layout.
    int frameVarCount; ///< Requests in the frame made last: 1; 0 after a refused single read.
    int spareWord;     ///< Unused, kept for the layout.

    /// @cond internal
    // Not part of the host's layout: what the driver adds for speed and safety.
    Shortcuts* shortcuts;     // what is kept besides
    unsigned int sendTurn;    // counts heads leaving sendList: shows whether a callback took ours
    unsigned int resets;      // counts intf_initProperty calls: tells whether a callback made one
    unsigned int recipePlans; // counts recipe plans: tells whether a callback replaced ours
    /// @endcond
};

extern "C" {
/** @brief The one instance. Built when the library is loaded, destroyed when it is unloaded. */
extern DOV417_EXPORT Protocol driver;
}

#endif
