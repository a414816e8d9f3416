// Hosts do more from within the value-change callback than they should: nothing of it may break the
// driver.
#include <set>

#include "cache/change_notifiers.h"
#include "cache/data_areas.h"
#include "cache_world.h"
#include "uncalled_functions.h"

namespace {

// What the host does when it is told of a change.
struct Action {
    const char* label;
    std::function<void()> run;
};

// What the driver is doing when it tells the host: a write, and its failure. Both announce.
struct Occasion {
    const char* label;
    std::function<void()> prepare;
    std::function<void()> write;
    std::function<void()> fail;
};

unsigned char someBytes[32] = {1, 2, 1, 4, 1, 6, 1, 8, 1, 10, 1, 12, 1, 14, 1, 16};

void initAgain()
{
    intf_initProperty(nullptr, 0, nullptr, nullptr, "7#0#0#3#10", nullptr);
}

void readAll()
{
    unsigned char out[64];
    for (const char* regName : {"R_W", "R_D", "M_W", "M_bit", "R_bit", "T"}) {
        intf_getData(1, name(regName), 0, 16, out);
    }
    intf_getData(2, name("C"), 100, 30, out);
}

void writeMore()
{
    DebugLines quiet;
    unsigned char data[32] = {0};
    intf_setData(1, name("R_W"), 0, 8, data, 2);
    intf_setData(1, name("M_bit"), 0, 30, data, 2);
    intf_setData(1, name("M_bit"), 0, 30, data, 2);
}

void planAgain()
{
    DebugLines quiet;
    QList<KEY_ADDRESS> keys = {key("C", 0, 3), key("R_D", 40, 4)};
    intf_addrMerge(keys);
}

void keepOneUnit()
{
    while (driver.dataAreas.size() > 1) {
        driver.dataAreas.removeLast();
    }
}

void manyUnits()
{
    for (int i = 0; i < 300; ++i) {
        getIndexOfDataArea(5, name("Q"), i, driver.dataAreas);
    }
}

void reverseUnits()
{
    for (int i = 0, j = static_cast<int>(driver.dataAreas.size()) - 1; i < j; ++i, --j) {
        std::swap(driver.dataAreas[i], driver.dataAreas[j]);
    }
}

const Action actions[] = {
    {"ReadsBack", readAll},
    {"InitialisesAgain", initAgain},
    {"ClearsTheCache", [] { driver.dataAreas.clear(); }},
    {"ClearsTheQueue", [] { driver.writeList.clear(); }},
    {"KeepsOneUnit", keepOneUnit},
    {"AddsManyUnits", manyUnits},
    {"ReversesTheUnits", reverseUnits},
    {"Writes", writeMore},
    {"PlansAgain", planAgain},
    {"RemovesTheCallback", [] { intf_setAddrValueChangeCallBack(nullptr); }},
    {"InitialisesAgainAndWrites",
     [] {
         initAgain();
         writeMore();
     }},
};

void watchEverything()
{
    DebugLines quiet;
    QList<KEY_ADDRESS> keys;
    for (const char* regName : {"R_W", "R_D", "M_W", "T"}) {
        keys.append(key(regName, 0, 8));
    }
    keys.append(key("M_bit", 0, 64));
    keys.append(key("R_bit", 0, 64));
    intf_addrMerge(keys);
}

Occasion shipped(const char* label, const char* regName, int address, int length)
{
    return {label, watchEverything,
            [=] {
                DebugLines quiet;
                intf_setData(1, name(regName), address, length, someBytes, 2);
            },
            [=] { _write_FailOrSuc(1, name(regName), address, length, 0); }};
}

// Units of area X with every view of every width marked.
void watchedUnits()
{
    driver.dataAreas.clear();
    for (int i = 0; i < 8; ++i) {
        const int index = getIndexOfDataArea(1, name("X"), i, driver.dataAreas);
        driver.dataAreas[index].viewFlags = 127;
        driver.dataAreas[index].bitMonitor = 0xFFFFFFFFu;
    }
}

Occasion generic(const char* label, const char* regName, const char* dataBits, const char* unitBits)
{
    return {
        label, watchedUnits,
        [=] {
            storeWrite(registerRow(regName, dataBits, unitBits), 1, name(regName), 0, 4, someBytes);
        },
        [=] {
            settleWrite(registerRow(regName, dataBits, unitBits), 1, name(regName), 0, 4, false);
        }};
}

const Occasion occasions[] = {
    shipped("WordWrite", "R_W", 0, 8),
    shipped("DoubleWordWrite", "R_D", 0, 8),
    shipped("TimerWrite", "T", 0, 8),
    shipped("BitWrite", "M_bit", 10, 12),
    shipped("RegisterBitWrite", "R_bit", 10, 12),
    generic("WordOverBytes", "X_W", "16", "8"),
    generic("DoubleWordOverBytes", "X_D", "32", "8"),
    generic("DoubleWordUnit", "X_D", "32", "32"),
    generic("ByteUnit", "X_B", "8", "8"),
    generic("OneValueUnit", "X", "1", "1"),
    generic("BitOverBytes", "X_bit", "1", "8"),
    {"WordAndByteNotifiers", watchedUnits, [] { _wordDataChange(nullptr, nullptr, 7, 0); },
     [] { _byteDataChange(nullptr, nullptr, 5, 0); }},
    {"DoubleWordNotifiers", watchedUnits, [] { _dwordDataChange(nullptr, nullptr, 7, 0); },
     [] { _dwordDataChange(nullptr, nullptr, 0, 0); }},
};

class FromWithinTheCallback
    : public CacheTest,
      public ::testing::WithParamInterface<std::tuple<const Occasion*, const Action*>> {
protected:
    static const Occasion& occasion()
    {
        return *std::get<0>(GetParam());
    }
    static const Action& action()
    {
        return *std::get<1>(GetParam());
    }
    void expectAWorkingDriver()
    {
        const Units all = units();
        EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), all.size());
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_ record = driver.dataAreas.at(i);
            EXPECT_EQ(
                getIndexOfDataArea(record.station, record.area, record.address, driver.dataAreas),
                i);
        }
        EXPECT_TRUE(driver.mutex.tryLock());
        driver.mutex.unlock();
        write("R_W", 500, 2, "34 12 78 56");
        EXPECT_EQ(read("R_W", 500, 2), "34 12 78 56");
        EXPECT_EQ(driver.writeList.last().address, 500);
    }
};

TEST_P(FromWithinTheCallback, TheHostMayActEveryTimeItIsTold)
{
    occasion().prepare();
    int told = 0;
    bool acting = false;
    whenTold([&](const Notice&) {
        ++told;
        if (!acting) {
            acting = true;
            action().run();
            acting = false;
        }
    });
    occasion().write();
    occasion().fail();
    EXPECT_GE(told, 1);
    whenTold(nullptr);
    expectAWorkingDriver();
}

TEST_P(FromWithinTheCallback, TheHostMayActOnceLateInTheCall)
{
    occasion().prepare();
    int told = 0;
    whenTold([&](const Notice&) {
        if (++told == 2) {
            action().run();
        }
    });
    occasion().write();
    occasion().fail();
    EXPECT_GE(told, 2);
    whenTold(nullptr);
    expectAWorkingDriver();
}

std::vector<const Occasion*> allOccasions()
{
    std::vector<const Occasion*> all;
    for (const Occasion& each : occasions) {
        all.push_back(&each);
    }
    return all;
}

std::vector<const Action*> allActions()
{
    std::vector<const Action*> all;
    for (const Action& each : actions) {
        all.push_back(&each);
    }
    return all;
}

// A reset from within: nothing of the call in progress may turn up in the new cache, nor be
// announced.
class ResetFromWithinTheCallback : public CacheTest,
                                   public ::testing::WithParamInterface<const Occasion*> {};

TEST_P(ResetFromWithinTheCallback, EndsTheCallInProgress)
{
    GetParam()->prepare();
    whenTold([](const Notice&) { initAgain(); });
    GetParam()->write();
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(queue(), Units());

    whenTold(nullptr);
    GetParam()->prepare();
    GetParam()->write();
    notices();
    whenTold([](const Notice&) { initAgain(); });
    GetParam()->fail();
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(units(), Units());
}

// The host may fill the cache anew at once, so that every unit stands where it stood.
TEST_P(ResetFromWithinTheCallback, LeavesTheRefilledCacheAsTheHostFilledIt)
{
    const auto resetAndRefill = [](const Notice&) {
        initAgain();
        GetParam()->prepare();
    };
    GetParam()->prepare();
    whenTold(resetAndRefill);
    GetParam()->write();
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(written(), Units());

    whenTold(nullptr);
    initAgain();
    GetParam()->prepare();
    GetParam()->write();
    notices();
    whenTold([&](const Notice& notice) {
        resetAndRefill(notice);
        driver.dataAreas[0].writePending = 1;
        driver.dataAreas[1].writePending = 1;
    });
    GetParam()->fail();
    EXPECT_EQ(notices().size(), 1u);
    EXPECT_EQ(written().size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Host, ResetFromWithinTheCallback, ::testing::ValuesIn(allOccasions()),
                         [](const auto& tested) { return std::string(tested.param->label); });

INSTANTIATE_TEST_SUITE_P(Host, FromWithinTheCallback,
                         ::testing::Combine(::testing::ValuesIn(allOccasions()),
                                            ::testing::ValuesIn(allActions())),
                         [](const auto& tested) {
                             return std::string(std::get<0>(tested.param)->label) +
                                    std::get<1>(tested.param)->label;
                         });

} // namespace
