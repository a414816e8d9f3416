#include "plain_rules.h"

#include <algorithm>
#include <cstdint>

namespace {

const char* const names[] = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                             "M_W",   "R_W",   "R_D",   "T",     "C"};

int indexOf(const std::string& name)
{
    for (int i = 0; i < 11; ++i) {
        if (name == names[i]) {
            return i;
        }
    }
    return -1;
}

std::uint32_t low32(long long value)
{
    return static_cast<std::uint32_t>(value);
}

int signed32(long long value)
{
    return static_cast<int>(low32(value));
}

// Station first, then register type in table order, then address.
std::uint32_t weight(const PlainKey& key)
{
    return low32(key.station * (11 * 65535LL)) + low32(indexOf(key.regName) * 65535LL) +
           low32(key.address);
}

bool mayJoin(const PlainKey& a, const PlainKey& b, int limit)
{
    const int end = signed32(static_cast<long long>(a.address) + a.length);
    return a.station == b.station && a.regName == b.regName &&
           signed32(static_cast<long long>(b.address) - end) <= limit;
}

// Bits become the words that hold them, every name of an area its word name.
void normalise(PlainKey& key)
{
    if (indexOf(key.regName) < 0) {
        return;
    }
    const size_t underscore = key.regName.find('_');
    if (underscore == std::string::npos) {
        return;
    }
    const bool bits = key.regName.substr(underscore) == "_bit";
    key.regName = key.regName.substr(0, underscore) + "_W";
    if (bits) {
        const int length = signed32(static_cast<long long>(key.length) + key.address % 16);
        key.length = length / 16 + (length % 16 != 0 ? 1 : 0);
        key.address = key.address / 16;
    }
}

// One walk over the list: an open group takes in what may join it; what is longer than 128 units
// is cut from the front.
std::vector<PlainKey> walk(const std::vector<PlainKey>& keys, int limit, std::vector<int>& starts)
{
    std::vector<PlainKey> out;
    if (keys.empty()) {
        return out;
    }
    PlainKey group = keys[0];
    starts.push_back(0);
    size_t next = 1;
    while (true) {
        if (group.length > 128) {
            out.push_back(group);
            out.back().length = 128;
            group.address = signed32(static_cast<long long>(group.address) + 128);
            group.length -= 128;
            continue;
        }
        if (next == keys.size()) {
            out.push_back(group);
            return out;
        }
        const PlainKey& key = keys[next];
        const int end = signed32(static_cast<long long>(key.address) + key.length);
        const int span = signed32(static_cast<long long>(end) - group.address);
        if (mayJoin(group, key, limit) && span <= 128) {
            group.length = std::max(group.length, span);
            group.address = std::min(group.address, key.address);
        } else {
            out.push_back(group);
            group = key;
            starts.push_back(static_cast<int>(next));
        }
        ++next;
    }
}

} // namespace

void plainSort(std::vector<PlainKey>& keys)
{
    for (size_t pass = 0; pass + 1 < keys.size(); ++pass) {
        for (size_t j = 0; j + 1 < keys.size() - pass; ++j) {
            if (weight(keys[j]) > weight(keys[j + 1])) {
                std::swap(keys[j], keys[j + 1]);
            }
        }
    }
}

PlainPlan plainCyclicPlan(std::vector<PlainKey> keys, int mergeGap)
{
    for (PlainKey& key : keys) {
        normalise(key);
    }
    plainSort(keys);
    PlainPlan plan;
    std::vector<int> unused;
    plan.requests = walk(walk(keys, 0, unused), mergeGap, unused);
    return plan;
}

PlainPlan plainRecipeRuns(const std::vector<PlainKey>& sorted)
{
    PlainPlan plan;
    for (const PlainKey& record : sorted) {
        plan.order.push_back(record.opener);
    }
    plan.requests = walk(sorted, 0, plan.starts);
    return plan;
}

PlainPlan plainRecipePlan(std::vector<PlainKey> records)
{
    plainSort(records);
    return plainRecipeRuns(records);
}

bool operator==(const PlainKey& a, const PlainKey& b)
{
    return a.station == b.station && a.regName == b.regName && a.address == b.address &&
           a.length == b.length && a.opener == b.opener;
}

std::ostream& operator<<(std::ostream& out, const PlainKey& key)
{
    return out << key.station << '/' << key.regName << ':' << key.address << '+' << key.length
               << " (" << key.opener << ')';
}
