// The planner is free to sort and join as fast as it can; here it is held against the rules written
// down plainly, pass by pass, over thousands of random address lists.
#include <algorithm>
#include <cstdint>
#include <random>

#include "planning/address_merging.h"
#include "uncalled_functions.h"
#include "world.h"

namespace {

struct PlainKey {
    int station;
    std::string name;
    int address;
    int length;
    int opener; // place in the list that the host handed in
};

bool operator==(const PlainKey& a, const PlainKey& b)
{
    return a.station == b.station && a.name == b.name && a.address == b.address &&
           a.length == b.length && a.opener == b.opener;
}

std::ostream& operator<<(std::ostream& out, const PlainKey& one)
{
    return out << one.station << '/' << one.name << ':' << one.address << '+' << one.length << " ("
               << one.opener << ')';
}

using PlainList = std::vector<PlainKey>;

const std::vector<std::string> typeNames = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                            "M_W",   "R_W",   "R_D",   "T",     "C"};

int typeIndex(const std::string& wanted)
{
    for (size_t i = 0; i < typeNames.size(); ++i) {
        if (typeNames[i] == wanted) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

std::uint32_t weight(const PlainKey& one)
{
    const std::int64_t sum = std::int64_t{one.station} * 720885 +
                             std::int64_t{typeIndex(one.name)} * 65535 + one.address;
    return static_cast<std::uint32_t>(sum);
}

void bubbleSort(PlainList& keys)
{
    for (size_t pass = 0; pass + 1 < keys.size(); ++pass) {
        for (size_t j = 0; j + 1 < keys.size() - pass; ++j) {
            if (weight(keys[j]) > weight(keys[j + 1])) {
                std::swap(keys[j], keys[j + 1]);
            }
        }
    }
}

void bitsToWords(PlainList& keys)
{
    for (PlainKey& one : keys) {
        const int type = typeIndex(one.name);
        if (type < 0) {
            continue;
        }
        const size_t underscore = one.name.find('_');
        if (type <= 3) { // the four bit types
            const int bits = one.length + one.address % 16;
            one.length = bits / 16 + (bits % 16 != 0 ? 1 : 0);
            one.address = one.address / 16;
        }
        if (underscore != std::string::npos) {
            one.name = one.name.substr(0, underscore) + "_W";
        }
    }
}

bool apart(const PlainKey& a, const PlainKey& b, int limit)
{
    return a.station != b.station || a.name != b.name || b.address - (a.address + a.length) > limit;
}

PlainList joinTouching(PlainList keys, std::vector<int>& starts)
{
    PlainList out;
    PlainKey open = keys[0];
    starts.push_back(0);
    bool restOfLast = false;
    size_t i = 0;
    for (;;) {
        if (open.length > 128) {
            PlainKey piece = open;
            piece.length = 128;
            out.push_back(piece);
            open.address += 128;
            open.length -= 128;
            continue;
        }
        if (i == 0) {
            if (keys.size() == 1) {
                out.push_back(open);
                return out;
            }
            i = 1;
            continue;
        }
        const int span = keys[i].address + keys[i].length - open.address;
        if (apart(open, keys[i], 0) || span > 128) {
            out.push_back(open);
            open = keys[i];
            if (!restOfLast) {
                starts.push_back(static_cast<int>(i));
            }
        } else {
            open.length = std::max(open.length, span);
            open.address = std::min(open.address, keys[i].address);
        }
        if (i + 1 < keys.size()) {
            ++i;
        } else if (open.length <= 128) {
            out.push_back(open);
            return out;
        } else {
            open.length = 128;
            keys[i].length -= 128;
            keys[i].address += 128;
            restOfLast = true;
        }
    }
}

PlainList bridgeHoles(const PlainList& runs, int gap)
{
    PlainList out;
    PlainKey open = runs[0];
    for (size_t i = 1; i < runs.size(); ++i) {
        const int span = runs[i].address + runs[i].length - open.address;
        if (apart(open, runs[i], gap) || span > 128) {
            out.push_back(open);
            open = runs[i];
        } else {
            open.length = std::max(open.length, span);
            open.address = std::min(open.address, runs[i].address);
        }
    }
    out.push_back(open);
    return out;
}

// Lists as hosts make them, and worse: few stations and types so that keys meet, long runs,
// lengths of zero and below, addresses below zero, unknown names.
class RandomKeys {
public:
    explicit RandomKeys(unsigned int seed) : engine(seed) {}

    int upTo(int low, int high)
    {
        return std::uniform_int_distribution<int>(low, high)(engine);
    }

    PlainList list()
    {
        const int count = upTo(1, upTo(0, 9) == 0 ? 60 : 14);
        const int types = upTo(1, 12);
        const int stations = upTo(1, 3);
        const int spread = upTo(0, 3) == 0 ? 3000 : 60;
        const int longest = upTo(0, 3) == 0 ? 400 : upTo(1, 40);
        PlainList keys;
        for (int i = 0; i < count; ++i) {
            const int type = upTo(0, types - 1);
            PlainKey one = {upTo(0, stations),
                            type < 11 ? typeNames[static_cast<size_t>(type)] : "X_W",
                            upTo(0, spread), upTo(1, longest), i};
            const int oddity = upTo(0, 199);
            if (oddity == 0) {
                one.length = upTo(-40, 0);
            } else if (oddity == 1) {
                one.address = -upTo(1, spread);
            } else if (oddity == 2) {
                one.address += 65000; // beyond 65535 the order runs into the next type
            } else if (oddity == 3) {
                one.length = 128 * upTo(1, 4) + upTo(-1, 1);
            }
            keys.push_back(one);
        }
        return keys;
    }

private:
    std::mt19937 engine;
};

QList<KEY_ADDRESS> toDriver(const PlainList& keys)
{
    QList<KEY_ADDRESS> list;
    for (const PlainKey& one : keys) {
        KEY_ADDRESS made = key(one.name.c_str(), one.address, one.length, one.station);
        made.userIndex = one.opener;
        list << made;
    }
    return list;
}

PlainList fromDriver(const QList<KEY_ADDRESS>& keys)
{
    PlainList list;
    for (int i = 0; i < keys.size(); ++i) {
        const KEY_ADDRESS& one = keys.at(i);
        list.push_back({one.stationNo, text(one.regName), one.address, one.length, one.userIndex});
    }
    return list;
}

class PlanningAgainstPlainRules : public DriverTest {};

TEST_F(PlanningAgainstPlainRules, CyclicPlansAreTheSame)
{
    const DebugLines quiet;
    RandomKeys random(20240611);
    for (int round = 0; round < 6000; ++round) {
        const int gap = random.upTo(-1, 40);
        configure(("7#0#0#3#" + std::to_string(gap)).c_str());
        const PlainList keys = random.list();

        PlainList expected = keys;
        std::vector<int> unused;
        bitsToWords(expected);
        bubbleSort(expected);
        expected = bridgeHoles(joinTouching(expected, unused), gap);

        QList<KEY_ADDRESS> merged = toDriver(keys);
        addrMerge(merged, mergeCyclic);
        ASSERT_EQ(fromDriver(merged), expected)
            << "round " << round << ", gap " << gap << ", " << ::testing::PrintToString(keys);
    }
}

TEST_F(PlanningAgainstPlainRules, RecipeRunsAndTheirOpenersAreTheSame)
{
    const DebugLines quiet;
    RandomKeys random(417);
    for (int round = 0; round < 6000; ++round) {
        PlainList expected = random.list();
        if (round % 2 == 0) {
            bubbleSort(expected);
        }
        QList<KEY_ADDRESS> merged = toDriver(expected);
        driver.groupStarts.clear();
        addrMerge(merged, mergeRecipe);

        const PlainList keys = expected;
        std::vector<int> starts;
        expected = joinTouching(expected, starts);
        ASSERT_EQ(fromDriver(merged), expected)
            << "round " << round << ", " << ::testing::PrintToString(keys);
        ASSERT_EQ(std::vector<int>(driver.groupStarts.begin(), driver.groupStarts.end()), starts)
            << "round " << round << ", " << ::testing::PrintToString(keys);
    }
}

TEST_F(PlanningAgainstPlainRules, RecipePlansAreTheSame)
{
    RandomKeys random(38400);
    for (int round = 0; round < 3000; ++round) {
        PlainList expected = random.list();
        QVector<_RCP_VAR_PRO> records;
        PlainList mine;
        for (const PlainKey& one : expected) {
            const int link = random.upTo(0, 4) == 0 ? 6 : 7;
            records.append(recipeRecord(link, one.name.c_str(), one.address, one.length, one.opener,
                                        one.station));
            if (link == 7) {
                mine.push_back(one);
            }
        }
        ASSERT_EQ(intf_setRcpAddress(records), static_cast<int>(mine.size()));

        std::vector<int> starts;
        PlainList plan;
        if (!mine.empty()) {
            bubbleSort(mine);
            plan = joinTouching(mine, starts);
        }
        PlainList planned;
        for (int i = 0; i < driver.recipeRequests.size(); ++i) {
            const _RCP_VAR_PRO& one = driver.recipeRequests.at(i);
            planned.push_back(
                {one.stationNo, text(one.regName), one.address, one.length, one.bufOffset});
        }
        ASSERT_EQ(planned, plan) << "round " << round << ", " << ::testing::PrintToString(mine);
        ASSERT_EQ(std::vector<int>(driver.groupStarts.begin(), driver.groupStarts.end()), starts)
            << "round " << round;
    }
}

} // namespace
