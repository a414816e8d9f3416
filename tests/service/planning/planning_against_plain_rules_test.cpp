// The planner is free to sort and join as fast as it can; here it is held against the rules written
// down plainly, pass by pass, over thousands of random address lists.
#include <random>

#include "plain_rules.h"
#include "planning/address_merging.h"
#include "uncalled_functions.h"
#include "world.h"

namespace {

using PlainList = std::vector<PlainKey>;

const std::vector<std::string> typeNames = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                            "M_W",   "R_W",   "R_D",   "T",     "C"};

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
        const int maxLength = upTo(0, 3) == 0 ? 400 : upTo(1, 40);
        PlainList keys;
        for (int i = 0; i < count; ++i) {
            const int type = upTo(0, types - 1);
            PlainKey one = {upTo(0, stations),
                            type < 11 ? typeNames[static_cast<size_t>(type)] : "X_W",
                            upTo(0, spread), upTo(1, maxLength), i};
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
        KEY_ADDRESS made =
            key(one.regName.c_str(), one.address, one.length, static_cast<int>(one.station));
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

        const PlainList expected = plainCyclicPlan(keys, gap).requests;
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
        PlainList keys = random.list();
        if (round % 2 == 0) {
            plainSort(keys);
        }
        QList<KEY_ADDRESS> merged = toDriver(keys);
        driver.groupStarts.clear();
        addrMerge(merged, mergeRecipe);

        const PlainPlan expected = plainRecipeRuns(keys);
        ASSERT_EQ(fromDriver(merged), expected.requests)
            << "round " << round << ", " << ::testing::PrintToString(keys);
        ASSERT_EQ(std::vector<int>(driver.groupStarts.begin(), driver.groupStarts.end()),
                  expected.starts)
            << "round " << round << ", " << ::testing::PrintToString(keys);
    }
}

TEST_F(PlanningAgainstPlainRules, RecipePlansAreTheSame)
{
    RandomKeys random(38400);
    for (int round = 0; round < 3000; ++round) {
        const PlainList handed = random.list();
        QVector<_RCP_VAR_PRO> records;
        PlainList mine;
        for (const PlainKey& one : handed) {
            const int link = random.upTo(0, 4) == 0 ? 6 : 7;
            records.append(recipeRecord(link, one.regName.c_str(), one.address, one.length,
                                        one.opener, static_cast<int>(one.station)));
            if (link == 7) {
                mine.push_back(one);
            }
        }
        ASSERT_EQ(intf_setRcpAddress(records), static_cast<int>(mine.size()));

        const PlainPlan plan = plainRecipePlan(mine);
        PlainList planned;
        for (int i = 0; i < driver.recipeRequests.size(); ++i) {
            const _RCP_VAR_PRO& one = driver.recipeRequests.at(i);
            planned.push_back(
                {one.stationNo, text(one.regName), one.address, one.length, one.bufOffset});
        }
        ASSERT_EQ(planned, plan.requests)
            << "round " << round << ", " << ::testing::PrintToString(mine);
        ASSERT_EQ(std::vector<int>(driver.groupStarts.begin(), driver.groupStarts.end()),
                  plan.starts)
            << "round " << round;
    }
}

} // namespace
