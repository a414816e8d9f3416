// The host's addresses -> as few read requests as possible.
#ifndef DOV417MODBUS_ADDRESS_MERGING_H
#define DOV417MODBUS_ADDRESS_MERGING_H

#include <QList>
#include <QVector>

#include "protocol/register_table.h"
#include "records.h"

enum {
    maxRunUnits = 128,         // longest merged request
    unlimitedPieceWords = 123, // one write of the Modbus protocol, where the host sets no limit
    unlimitedPieceBits = 984
};

enum MergeMode {
    mergeCyclic = 1,
    mergeRecipe = 2
};

// 1: keep apart, 0: may join.
int judgeAddrMerge(KEY_ADDRESS a, KEY_ADDRESS b, int useGap);

// Cuts a key into pieces of at most maxLen units.
void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData);

// The host's limit for one piece, or that of the Modbus protocol where it set none.
int pieceLimit(int bitFlag);

void addrMerge(QList<KEY_ADDRESS>& keys, int mode);

// What addrMerge makes of one key before it joins: bits become the words that hold them.
void normaliseKey(KEY_ADDRESS& key, const RegisterType& type, int mode);

// The same planning on light records: a key carries a kilobyte of values that no plan looks at.
struct Run {
    int stationNo;
    QString regName;
    int address;
    int length;
    int opener; // index of the key that opened the run
};

// Joins neighbours whose hole is at most `limit`, up to 128 units, and cuts what is longer from the
// front. `starts`, if given, receives the index of each run that opened a new group.
QVector<Run> joinRuns(const QVector<Run>& runs, int limit, QList<int>* starts);

// Lengths of a recipe's runs, in 16-bit units.
void normaliseRecipeRun(Run& run);

#endif
