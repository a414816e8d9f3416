// Planning against the plain statement of its rules: the same requests in the same order.
#include "host.h"
#include "plain_rules.h"
#include "planning/address_merging.h"
#include "uncalled_functions.h"

namespace {

PlainKey plainOf(const KEY_ADDRESS& key, int index)
{
    return {key.stationNo, key.regName.toStdString(), key.address, key.length, index};
}

template <typename Request>
void requireSame(const Request& made, const PlainKey& plain)
{
    require(made.stationNo == plain.station, "a request has the plain rules' station");
    require(made.regName.toStdString() == plain.regName, "a request has the plain rules' name");
    require(made.address == plain.address, "a request has the plain rules' address");
    require(made.length == plain.length, "a request has the plain rules' length");
    require(made.length <= 128, "no request is longer than 128 units");
}

QList<KEY_ADDRESS> keysOf(Script& script)
{
    QList<KEY_ADDRESS> keys;
    const int clustered = script.byte();
    int near = 0;
    for (int i = 0; i < 48 && !script.ended(); ++i) {
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = script.station();
        key.regName = script.regName();
        // Close to the key before, or anywhere.
        key.address = clustered % 2 == 0 ? wrapped(near + script.byte() - 100LL) : script.address();
        key.length = script.length(40);
        key.hostValue = i;
        key.userIndex = 3 * i;
        near = wrapped(static_cast<long long>(key.address) + key.length);
        keys.append(key);
    }
    return keys;
}

void compareCyclic(const QList<KEY_ADDRESS>& keys, const std::vector<PlainKey>& plain)
{
    const PlainPlan plan = plainCyclicPlan(plain, driver.mergeGap);
    QList<KEY_ADDRESS> handed = keys;
    const int count = intf_addrMerge(handed);
    require(count == static_cast<int>(plan.requests.size()), "as many requests as planned plainly");
    require(driver.readList.size() == count, "the count is that of the list");
    for (int i = 0; i < count; ++i) {
        requireSame(driver.readList.at(i), plan.requests[static_cast<size_t>(i)]);
        require(driver.readList.at(i).kind == 4, "a planned read is of kind 4");
    }
    require(handed.size() == keys.size(), "the host's list keeps its size");
    for (int i = 0; i < keys.size(); ++i) {
        require(handed.at(i).address == keys.at(i).address &&
                    handed.at(i).regName == keys.at(i).regName &&
                    handed.at(i).length == keys.at(i).length,
                "the host's list is unchanged");
    }
    addrMerge(handed, mergeCyclic);
    require(handed.size() == count, "the engine plans as many");
    for (int i = 0; i < count; ++i) {
        const PlainKey& same = plan.requests[static_cast<size_t>(i)];
        requireSame(handed.at(i), same);
        require(handed.at(i).hostValue == same.opener, "a request carries its opener's values");
    }
}

void compareRecipe(const QList<KEY_ADDRESS>& keys, const std::vector<PlainKey>& plain)
{
    const PlainPlan plan = plainRecipePlan(plain);
    QVector<_RCP_VAR_PRO> records;
    for (const KEY_ADDRESS& key : keys) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = 7;
        record.stationNo = key.stationNo;
        record.regName = key.regName;
        record.address = key.address;
        record.length = key.length;
        record.bufOffset = key.userIndex;
        records.append(record);
        record.linkId = 8; // another link's
        records.append(record);
    }
    require(intf_setRcpAddress(records) == keys.size(), "this link's records are taken");
    require(driver.recipeRequests.size() == static_cast<int>(plan.requests.size()),
            "as many recipe requests as planned plainly");
    for (int i = 0; i < driver.recipeRequests.size(); ++i) {
        const PlainKey& same = plan.requests[static_cast<size_t>(i)];
        requireSame(driver.recipeRequests.at(i), same);
        require(driver.recipeRequests.at(i).bufOffset == 3 * same.opener,
                "a recipe request starts where its first record's values start");
    }
    require(driver.groupStarts.size() == static_cast<int>(plan.starts.size()),
            "as many groups as planned plainly");
    for (int i = 0; i < driver.groupStarts.size(); ++i) {
        require(driver.groupStarts.at(i) == plan.starts[static_cast<size_t>(i)],
                "a group starts where the plain rules start it");
    }
    for (int i = 0; i < driver.recipeVars.size(); ++i) {
        require(driver.recipeVars.at(i).bufOffset == 3 * plan.order[static_cast<size_t>(i)],
                "records are sorted like the plain rules sort them");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    static HostMemory host;
    Script script(data, size);
    freshDriver(host, "7#0#0#3#0");
    const int gaps[] = {0, 1, 2, 5, 10, 30, 128, 1000, -1, -1000};
    driver.mergeGap = gaps[script.choice(10)];
    const QList<KEY_ADDRESS> keys = keysOf(script);
    std::vector<PlainKey> plain;
    for (int i = 0; i < keys.size(); ++i) {
        plain.push_back(plainOf(keys.at(i), i));
    }
    compareCyclic(keys, plain);
    compareRecipe(keys, plain);
    return 0;
}
