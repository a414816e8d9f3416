// The host's addresses -> as few read requests as possible.
#ifndef DOV417MODBUS_ADDRESS_MERGING_H
#define DOV417MODBUS_ADDRESS_MERGING_H

#include <QList>
#include <QVector>

#include "protocol/register_table.h"
#include "records.h"

enum {
    maxRunUnits = 128 // of a merged request
};

enum MergeMode {
    mergeCyclic = 1,
    mergeRecipe = 2
};

// What planning looks at of a key: the key itself carries a kilobyte of values.
struct Run {
    int stationNo;
    QString regName;
    int address;
    int length;
    int opener; // index of the key that opened the run
};

Run runOf(const KEY_ADDRESS& key, int opener);

// Another station or name, or a hole of more than `limit` between the end of a and the start of b.
bool keepApart(const Run& a, const Run& b, int limit);

// Addresses and lengths in 16-bit units. For cyclic reads bits become the words that hold them, and
// the names of one area its word name.
void normalise(Run& run, const RegisterType& type, int mode);

// The same for a recipe's run, by its name; one of an unknown name is left alone.
void normaliseRecipeRun(Run& run);

// Joins neighbours whose hole is at most `limit`, up to 128 units, and cuts what is longer from the
// front. `starts`, if given, receives the index of each run that opened a new group.
QVector<Run> joinRuns(const QVector<Run>& runs, int limit, QList<int>* starts);

// The whole way from keys to requests. Recipe runs are joined as they stand, and
// driver.groupStarts receives where each group starts.
QVector<Run> planRuns(const QList<KEY_ADDRESS>& keys, int mode);

#endif
