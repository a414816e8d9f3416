#include "planning/address_merging.h"

#include <QDebug>
#include <algorithm>
#include <cstring>
#include <limits>

#include "cache/data_areas.h"
#include "cache/unit_index.h"
#include "intf.h"
#include "planning/weight_order.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/wrap.h"

namespace {

enum {
    bitValues = -1
};

void debugLine(const char* label, int index, const QString& regName, int address, int length)
{
    qDebug() << QString::fromLatin1("%1:id=%2,reg=%3,address=%4,len=%5")
                    .arg(QString::fromLatin1(label), QString::number(index), regName,
                         QString::number(address), QString::number(length));
}

// Positive and negative numbers beyond 32 bits end at the largest ones.
template <typename Real>
int truncated(Real value)
{
    const Real largest = static_cast<Real>(std::numeric_limits<int>::max());
    const Real smallest = static_cast<Real>(std::numeric_limits<int>::min());
    return value >= largest    ? std::numeric_limits<int>::max()
           : value <= smallest ? std::numeric_limits<int>::min()
                               : static_cast<int>(value);
}

template <typename Keyed>
bool keepApart(const Keyed& a, const Keyed& b, int limit)
{
    return a.stationNo != b.stationNo || a.regName != b.regName ||
           wrapSub(b.address, wrapAdd(a.address, a.length)) > limit;
}

// The words that hold a run of bits; names of one area all become its word name.
template <typename Keyed>
void normaliseCyclic(Keyed& key, const RegisterType& type)
{
    const int unit = type.unitBits;
    const bool bits = key.regName.endsWith(QLatin1String("_bit"));
    const int underscore = static_cast<int>(key.regName.indexOf(QLatin1Char('_')));
    if (underscore >= 0) {
        key.regName.truncate(underscore);
        key.regName.append(QLatin1String("_W"));
    }
    if (bits) {
        const int length = wrapAdd(key.length, key.address % unit);
        key.length = length / unit + (length % unit != 0 ? 1 : 0);
        key.address = key.address / unit;
    } else if (unit != 1) {
        key.length = truncated(static_cast<float>(key.length) * (16.0f / static_cast<float>(unit)));
    }
}

template <typename Keyed>
void normaliseRecipe(Keyed& key, const RegisterType& type)
{
    if (type.dataBits != 1) {
        key.length = truncated(key.length * (16.0 / type.unitBits));
    }
}

template <typename Keyed>
void normalise(Keyed& key, const RegisterType& type, int mode)
{
    if (type.unitBits < 1) {
        return;
    }
    if (mode == mergeCyclic) {
        normaliseCyclic(key, type);
    } else {
        normaliseRecipe(key, type);
    }
}

Run runOf(const KEY_ADDRESS& key, int opener)
{
    Run run = {key.stationNo, key.regName, key.address, key.length, opener};
    return run;
}

QVector<Run> normalisedRuns(const QList<KEY_ADDRESS>& keys, int mode)
{
    QVector<Run> runs;
    runs.reserve(keys.size());
    for (int i = 0; i < keys.size(); ++i) {
        Run run = runOf(keys.at(i), i);
        const int index = indexOfName(run.regName);
        if (index >= 0) {
            normalise(run, registerType(index), mode);
        }
        if (mode == mergeCyclic) {
            debugLine("step0", i, run.regName, run.address, run.length);
        }
        runs.append(run);
    }
    return runs;
}

QVector<Run> planCyclic(const QList<KEY_ADDRESS>& keys)
{
    QVector<Run> runs = normalisedRuns(keys, mergeCyclic);
    sortByWeight(runs);
    return joinRuns(joinRuns(runs, 0, 0), driver.mergeGap, 0);
}

QVector<Run> planRecipe(const QList<KEY_ADDRESS>& keys)
{
    return joinRuns(normalisedRuns(keys, mergeRecipe), 0, &driver.groupStarts);
}

} // namespace

int judgeAddrMerge(KEY_ADDRESS a, KEY_ADDRESS b, int useGap)
{
    return keepApart(a, b, useGap == 0 ? 0 : driver.mergeGap) ? 1 : 0;
}

int pieceLimit(int bitFlag)
{
    const int limit = bitFlag == bitValues ? driver.pieceBitLimit : driver.pieceWordLimit;
    if (limit >= 1) {
        return limit;
    }
    return bitFlag == bitValues ? unlimitedPieceBits : unlimitedPieceWords;
}

void groupingKey(KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData)
{
    const bool bits = key.bitFlag == bitValues;
    if (maxLen < 1) {
        maxLen = bits ? unlimitedPieceBits : unlimitedPieceWords;
    }
    if (key.length <= maxLen) {
        out.append(key);
        return;
    }
    const long long size = bits ? 1 : 2;
    for (long long done = 0; done < key.length; done += maxLen) {
        KEY_ADDRESS piece = key;
        piece.address = wrapAdd(key.address, static_cast<int>(done));
        piece.length = static_cast<int>(std::min<long long>(maxLen, key.length - done));
        if (withData == 1) {
            // No more than the whole key's buffer holds behind this piece's place.
            const long long from = std::min<long long>(size * done, recordDataSize);
            const long long bytes = std::min(size * piece.length, recordDataSize - from);
            memcpy(piece.data, key.data + from, static_cast<size_t>(bytes));
        }
        out.append(piece);
    }
}

void normaliseKey(KEY_ADDRESS& key, const RegisterType& type, int mode)
{
    normalise(key, type, mode);
}

void normaliseRecipeRun(Run& run)
{
    const int index = indexOfName(run.regName);
    if (index >= 0) {
        normaliseRecipe(run, registerType(index));
    }
}

QVector<Run> joinRuns(const QVector<Run>& runs, int limit, QList<int>* starts)
{
    QVector<Run> joined;
    Run open = Run();
    for (int i = 0; i < runs.size(); ++i) {
        const Run& next = runs.at(i);
        const int span = wrapSub(wrapAdd(next.address, next.length), open.address);
        if (i > 0 && !keepApart(open, next, limit) && span <= maxRunUnits) {
            // A run inside a longer one that was cut already takes its start back to its own.
            open.length = std::max(open.length, span);
            open.address = std::min(open.address, next.address);
        } else {
            if (i > 0) {
                joined.append(open);
            }
            open = next;
            if (starts != 0) {
                starts->append(i);
            }
        }
        for (; open.length > maxRunUnits; open.length -= maxRunUnits) {
            joined.append(open);
            joined.last().length = maxRunUnits;
            open.address = wrapAdd(open.address, maxRunUnits);
        }
    }
    if (!runs.isEmpty()) {
        joined.append(open);
    }
    return joined;
}

void addrMerge(QList<KEY_ADDRESS>& keys, int mode)
{
    const QVector<Run> runs = mode == mergeCyclic ? planCyclic(keys) : planRecipe(keys);
    QList<KEY_ADDRESS> merged;
    for (int i = 0; i < runs.size(); ++i) {
        const Run& run = runs.at(i);
        KEY_ADDRESS key = keys.at(run.opener);
        key.regName = run.regName;
        key.address = run.address;
        key.length = run.length;
        merged.append(key);
    }
    keys = merged;
}

int intf_addrMerge(QList<KEY_ADDRESS>& keys)
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        UnitEdit unit(i);
        unit->pendingBits = 0;
        unit->viewFlags = 0;
        unit->bitMonitor = 0;
    }
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `keys` may be the driver's own
    const QList<KEY_ADDRESS> handed = keys;
    for (int i = 0; i < handed.size(); ++i) {
        const KEY_ADDRESS& key = handed.at(i);
        _setDataAreaMonitorFlag(key.stationNo, key.regName, key.address, key.length);
        debugLine("step", i, key.regName, key.address, key.length);
    }
    driver.readList.clear();
    if (handed.isEmpty()) {
        return 0;
    }
    const QVector<Run> runs = planCyclic(handed);
    for (int i = 0; i < runs.size(); ++i) {
        const Run& run = runs.at(i);
        VARIABLE request = VARIABLE();
        request.kind = sendCyclicRead;
        request.stationNo = run.stationNo;
        request.regName = sharedRegName(run.regName);
        request.address = run.address;
        request.length = run.length;
        driver.readList.append(request);
    }
    for (int i = 0; i < driver.readList.size(); ++i) {
        const VARIABLE& request = driver.readList.at(i);
        qDebug() << QString::fromLatin1("step3:id=%1,std=%2,reg=%3,address=%4,len=%5")
                        .arg(QString::number(i), QString::number(request.stationNo),
                             request.regName, QString::number(request.address),
                             QString::number(request.length));
    }
    return static_cast<int>(driver.readList.size());
}
