#include "planning/recipes.h"

#include <algorithm>
#include <cstring>

#include "cache/change_notifiers.h"
#include "driver_lock.h"
#include "intf.h"
#include "planning/address_merging.h"
#include "planning/weight_order.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/byte_conversion.h"
#include "protocol/wrap.h"

namespace {

QVector<Run> recipeRuns(int from, int to)
{
    QVector<Run> runs;
    for (int i = from; i < to; ++i) {
        const _RCP_VAR_PRO& record = driver.recipeVars.at(i);
        Run run = {record.stationNo, record.regName, record.address, record.length, i};
        normaliseRecipeRun(run);
        runs.append(run);
    }
    return runs;
}

// The records that were merged into one run, and with others cut into requests.
struct RecipeGroup {
    QVector<Run> records; // empty: the plan has no such request any more
    int bufOffset;
};

// Which group the request at the recipe cursor was made of. Requests stand in the order of their
// groups; a group over 128 units takes more than one.
RecipeGroup groupAtCursor(const VARIABLE& request)
{
    RecipeGroup group = {QVector<Run>(), 0};
    if (driver.recipeIndex < 0 || driver.recipeIndex >= driver.recipeRequests.size()) {
        return group;
    }
    const _RCP_VAR_PRO& planned = driver.recipeRequests.at(driver.recipeIndex);
    if (planned.stationNo != request.stationNo || planned.regName != request.regName ||
        planned.address != request.address || planned.length != request.length) {
        return group;
    }
    const int recordCount = static_cast<int>(driver.recipeVars.size());
    const int groups = static_cast<int>(driver.groupStarts.size());
    int requests = 0;
    for (int g = 0; g < groups; ++g) {
        const int from = driver.groupStarts.at(g);
        const int to = g + 1 < groups ? driver.groupStarts.at(g + 1) : recordCount;
        if (from < 0 || from >= to || to > recordCount) {
            return group; // changed from outside: not a plan of these records
        }
        const QVector<Run> records = recipeRuns(from, to);
        requests += static_cast<int>(joinRuns(records, 0, 0).size());
        if (requests > driver.recipeIndex) {
            group.records = records;
            group.bufOffset = driver.recipeVars.at(from).bufOffset;
            return group;
        }
    }
    return group;
}

bool holds(const RecipeGroup& group, int address)
{
    for (int i = 0; i < group.records.size(); ++i) {
        const Run& record = group.records.at(i);
        const int offset = wrapSub(address, record.address);
        if (offset >= 0 && offset < record.length) {
            return true;
        }
    }
    return false;
}

} // namespace

int intf_setRcpAddress(QVector<_RCP_VAR_PRO>& records)
{
    const DriverCall call;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): may be driver.recipeVars itself
    const QVector<_RCP_VAR_PRO> handed = records;
    driver.recipeVars.clear();
    for (int i = 0; i < handed.size(); ++i) {
        if (handed.at(i).linkId == driver.callBackTag) {
            driver.recipeVars.append(handed.at(i));
        }
    }
    sortByWeight(driver.recipeVars);
    driver.groupStarts.clear();
    driver.recipeRequests.clear();
    const QVector<Run> runs =
        joinRuns(recipeRuns(0, static_cast<int>(driver.recipeVars.size())), 0, &driver.groupStarts);
    for (int i = 0; i < runs.size(); ++i) {
        const Run& run = runs.at(i);
        _RCP_VAR_PRO request = _RCP_VAR_PRO();
        request.linkId = driver.callBackTag;
        request.stationNo = run.stationNo;
        request.regName = sharedRegName(run.regName);
        request.address = run.address;
        request.length = run.length;
        request.bufOffset = driver.recipeVars.at(run.opener).bufOffset;
        driver.recipeRequests.append(request);
    }
    ++driver.recipePlans;
    return static_cast<int>(driver.recipeVars.size());
}

bool recipeValuesAreThere(const _RCP_VAR_PRO& request)
{
    return driver.recipeBuffer != 0 && request.bufOffset >= 0;
}

void rcpAddrToVar(_RCP_VAR_PRO record, VARIABLE& var, int withData)
{
    var.stationNo = record.stationNo;
    var.regName = record.regName;
    var.address = record.address;
    var.length = record.length;
    memset(var.data, 0, sizeof(var.data));
    if (withData == 0 || !recipeValuesAreThere(record)) {
        return;
    }
    const int index = indexOfName(record.regName);
    if (index < 0 || record.length < 0) {
        return;
    }
    const long long bytes =
        static_cast<long long>(record.length) * (registerType(index).unitBits / 8);
    memcpy(var.data, driver.recipeBuffer + record.bufOffset,
           static_cast<size_t>(std::min<long long>(bytes, recordDataSize)));
}

void storeRecipeUpload(const VARIABLE& request, const unsigned char* words, int count)
{
    const RecipeGroup group = groupAtCursor(request);
    if (group.records.isEmpty() || driver.recipeBuffer == 0) {
        return;
    }
    const unsigned int plan = driver.recipePlans;
    for (int i = 0; i < count; ++i, words += 2) {
        const int address = wrapAdd(request.address, i);
        const int word = wrapAdd(group.bufOffset, wrapSub(address, group.records.first().address));
        if (word < 0 || !holds(group, address)) {
            continue;
        }
        driver.recipeBuffer[word] = static_cast<unsigned short>(uchar2int16(words[0], words[1]));
        if (!callHost(0, -1, QString::fromLatin1("RWI"), word) || driver.recipePlans != plan) {
            return;
        }
    }
}
