// Hosts may change the lists of `driver` at any time; the cache finds the first matching record of
// the list as it is now.

#include <algorithm>
#include <random>
#include <utility>

#include "cache/data_areas.h"
#include "cache/unit_index.h"
#include "cache_world.h"
#include "link/decoding.h"
#include "uncalled_functions.h"

namespace {

class ChangedFromOutside : public CacheTest {
protected:
    static int find(const char* area, int address, int station = 1)
    {
        return getIndexOfDataArea(station, name(area), address, driver.dataAreas);
    }

    // Three units that the driver has found before: M 0, M 1 and M 2.
    ChangedFromOutside()
    {
        find("M", 0);
        find("M", 1);
        find("M", 2);
    }
};

TEST_F(ChangedFromOutside, AClearedCacheStartsAnew)
{
    driver.dataAreas.clear();
    EXPECT_EQ(find("M", 2), 0);
    EXPECT_EQ(find("M", 0), 1);
    EXPECT_EQ(units(), Units({"1/M 2", "1/M 0"}));
}

TEST_F(ChangedFromOutside, ACacheRefilledToTheSameSizeIsSearchedAsItIsNow)
{
    driver.dataAreas.clear();
    put("R", 7, "");
    put("M", 2, "");
    put("M", 0, "");
    EXPECT_EQ(find("M", 0), 2);
    EXPECT_EQ(find("M", 2), 1);
    EXPECT_EQ(find("R", 7), 0);
    EXPECT_EQ(find("M", 1), 3);
}

TEST_F(ChangedFromOutside, AnAssignedListIsSearchedAsItIsNow)
{
    const _DATA_ second = driver.dataAreas.at(2);
    driver.dataAreas = QList<_DATA_>{second, driver.dataAreas.at(1), driver.dataAreas.at(0)};
    EXPECT_EQ(find("M", 0), 2);
    EXPECT_EQ(find("M", 2), 0);
}

TEST_F(ChangedFromOutside, AKeyEditedInPlaceIsFoundUnderItsNewKeyOnly)
{
    driver.dataAreas[1].address = 50;
    EXPECT_EQ(find("M", 50), 1);
    EXPECT_EQ(find("M", 1), 3);
    driver.dataAreas[0].area = name("R");
    EXPECT_EQ(find("R", 0), 0);
    EXPECT_EQ(find("M", 0), 4);
    driver.dataAreas[2].station = 9;
    EXPECT_EQ(find("M", 2, 9), 2);
    EXPECT_EQ(find("M", 2), 5);
}

TEST_F(ChangedFromOutside, AKeyEditedIntoAnEarlierDuplicateWins)
{
    driver.dataAreas[0].address = 2;
    EXPECT_EQ(find("M", 2), 0);
    driver.dataAreas[0].address = 0;
    EXPECT_EQ(find("M", 2), 2);
}

TEST_F(ChangedFromOutside, AnEarlierDuplicatePutInWins)
{
    const _DATA_ second = driver.dataAreas.at(2);
    driver.dataAreas.prepend(second);
    EXPECT_EQ(find("M", 2), 0);
    EXPECT_EQ(find("M", 0), 1);
    driver.dataAreas.insert(2, driver.dataAreas.at(2));
    EXPECT_EQ(find("M", 1), 2);
    driver.dataAreas.removeFirst();
    EXPECT_EQ(find("M", 2), 3);
}

TEST_F(ChangedFromOutside, ALaterDuplicateIsReachedOnceTheEarlierIsGone)
{
    put("M", 0, "");
    EXPECT_EQ(find("M", 0), 0);
    driver.dataAreas.removeAt(0);
    EXPECT_EQ(find("M", 0), 2);
    EXPECT_EQ(find("M", 1), 0);
}

TEST_F(ChangedFromOutside, SwappedRecordsAreFoundWhereTheyAre)
{
    std::swap(driver.dataAreas[0], driver.dataAreas[2]);
    EXPECT_EQ(find("M", 0), 2);
    EXPECT_EQ(find("M", 2), 0);
}

TEST_F(ChangedFromOutside, AReplacedRecordIsFoundUnderItsKey)
{
    _DATA_ other = driver.dataAreas.at(1);
    other.address = 60;
    driver.dataAreas.replace(1, other);
    EXPECT_EQ(find("M", 60), 1);
    EXPECT_EQ(find("M", 1), 3);
}

TEST_F(ChangedFromOutside, ARecordAppendedByTheHostIsFound)
{
    put("M", 3, "34 12");
    EXPECT_EQ(read("M_W", 3, 1), "34 12");
    EXPECT_EQ(driver.dataAreas.size(), 4);
}

TEST_F(ChangedFromOutside, AListHandedOverAndBackIsSearchedAsItIsNow)
{
    QList<_DATA_> kept;
    kept.swap(driver.dataAreas);
    EXPECT_EQ(find("M", 2), 0);
    kept.swap(driver.dataAreas);
    EXPECT_EQ(find("M", 2), 2);
}

TEST_F(ChangedFromOutside, ValuesEditedInPlaceAreRead)
{
    EXPECT_EQ(read("M_W", 1, 1), "00 00");
    driver.dataAreas[1].deviceValue[0] = 0x34;
    EXPECT_EQ(read("M_W", 1, 1), "34 00");
    driver.dataAreas[1].pendingValue[0] = 0x56;
    driver.dataAreas[1].writePending = 1;
    EXPECT_EQ(read("M_W", 1, 1), "56 00");
}

TEST_F(ChangedFromOutside, ACopyOfTheCacheStaysAsItWasTaken)
{
    const QList<_DATA_> copy = driver.dataAreas;
    plan({key("M_W", 0, 4), key("M_bit", 5, 1)});
    save("M_W", 0, 3, "01 02 03 04 05 06");
    settleNamed("M_W", 0, 2, 1);
    ASSERT_EQ(copy.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(copy.at(i).address, i);
        EXPECT_EQ(copy.at(i).viewFlags, 0);
        EXPECT_EQ(copy.at(i).bitMonitor, 0u);
        EXPECT_EQ(copy.at(i).writePending, 0);
        EXPECT_EQ(toHex(copy.at(i).pendingValue, 4), "00 00 00 00");
        EXPECT_EQ(toHex(copy.at(i).deviceValue, 4), "00 00 00 00");
    }
}

TEST_F(ChangedFromOutside, ACopyTakenEarlierCanBePutBack)
{
    const QList<_DATA_> copy = driver.dataAreas;
    find("M", 3);
    save("M_W", 2, 1, "34 12");
    driver.dataAreas = copy;
    EXPECT_EQ(read("M_W", 2, 1), "00 00");
    EXPECT_EQ(find("M", 3), 3);
    EXPECT_EQ(copy.size(), 3);
}

TEST_F(ChangedFromOutside, AWriteIsStoredInTheFirstRecordEvenWhenTheCacheChangedSinceItWasFound)
{
    save("M_W", 1, 1, "34 12");
    const _DATA_ first = driver.dataAreas.at(1);
    driver.dataAreas.prepend(first);
    save("M_W", 1, 1, "78 56");
    EXPECT_EQ(toHex(driver.dataAreas.at(0).pendingValue, 2), "78 56");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).pendingValue, 2), "34 12");
}

// M 1 a second time, right behind M 0: where a run of M would look for it.
TEST_F(ChangedFromOutside, ARunFindsTheFirstRecordOfEachUnitThoughAnotherStandsNearer)
{
    const auto refill = [] {
        driver.dataAreas.clear();
        put("M", 1, "11");
        put("M", 0, "00");
        put("M", 1, "22");
        put("M", 2, "33");
    };
    refill();
    EXPECT_EQ(read("M_W", 0, 3), "00 00 11 00 33 00");
    EXPECT_EQ(read("M_bit", 15, 2), "00 01");
    refill();
    _setDataAreaMonitorFlag(1, name("M_W"), 0, 3);
    EXPECT_EQ(marks(), Units({"M1 views 1", "M0 views 1", "M1", "M2 views 1"}));
    refill();
    save("M_W", 0, 2, "01 02 03 04");
    EXPECT_EQ(written(), Units({"M1 03 04 00 00", "M0 01 02 00 00"}));
    settleNamed("M_W", 0, 2, 1);
    EXPECT_EQ(written(), Units());
    EXPECT_EQ(toHex(driver.dataAreas.at(0).deviceValue, 2), "03 04");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).deviceValue, 2), "22 00");
    refill();
    save("M_bit", 15, 2, "01 01");
    EXPECT_EQ(written(), Units({"M1 11 00 00 00", "M0 00 80 00 00"}));
    settleNamed("M_bit", 15, 2, 1);
    EXPECT_EQ(written(), Units());
    driver.dataAreas.clear();
    put("R", 1, "11");
    put("R", 0, "00");
    put("R", 1, "22");
    EXPECT_EQ(read("R_D", 0, 2), "00 00 11 00");
    save("R_D", 0, 2, "01 02 03 04");
    EXPECT_EQ(written(), Units({"R1 03 04 00 00", "R0 01 02 00 00"}));
}

// What the cache promises, said plainly: the first record with the key, else a new one at the end.
int plainFind(QList<_DATA_>& list, int station, const QString& area, int address)
{
    for (int i = 0; i < list.size(); ++i) {
        const _DATA_& record = list.at(i);
        if (record.station == station && record.area == area && record.address == address) {
            return i;
        }
    }
    _DATA_ added = _DATA_();
    added.station = station;
    added.area = area;
    added.address = address;
    list.append(added);
    return static_cast<int>(list.size()) - 1;
}

class RandomHost {
public:
    explicit RandomHost(unsigned int seed) : numbers(seed) {}
    int below(int limit)
    {
        return static_cast<int>(numbers() % static_cast<unsigned int>(limit));
    }
    void editKey(_DATA_& record)
    {
        record.station = below(2);
        record.area = name(below(2) == 0 ? "M" : "R");
        record.address = below(12);
    }
    // The same change to both lists.
    void change(QList<_DATA_>& list, QList<_DATA_>& model)
    {
        const int size = static_cast<int>(list.size());
        const int at = size == 0 ? 0 : below(size);
        const int to = size == 0 ? 0 : below(size);
        _DATA_ record = size == 0 ? _DATA_() : list.at(at);
        editKey(record);
        switch (below(size == 0 ? 2 : 7)) {
        case 0:
            list.append(record);
            model.append(record);
            break;
        case 1:
            list.insert(to, record);
            model.insert(to, record);
            break;
        case 2:
            list[at].address = model[at].address = below(12);
            break;
        case 3:
            std::swap(list[at], list[to]);
            std::swap(model[at], model[to]);
            break;
        case 4:
            list.removeAt(at);
            model.removeAt(at);
            break;
        case 5:
            list.replace(at, record);
            model.replace(at, record);
            break;
        case 6:
            if (below(10) == 0) {
                list.clear();
                model.clear();
            }
            break;
        }
    }

private:
    std::mt19937 numbers;
};

TEST_F(ChangedFromOutside, EveryLookupFindsWhatAPlainSearchFinds)
{
    RandomHost host(417);
    driver.dataAreas.clear();
    QList<_DATA_> model;
    for (int step = 0; step < 20000; ++step) {
        if (host.below(4) == 0) {
            host.change(driver.dataAreas, model);
            continue;
        }
        _DATA_ wanted = _DATA_();
        host.editKey(wanted);
        const int expected = plainFind(model, wanted.station, wanted.area, wanted.address);
        ASSERT_EQ(getIndexOfDataArea(wanted.station, wanted.area, wanted.address, driver.dataAreas),
                  expected)
            << "step " << step;
        ASSERT_EQ(driver.dataAreas.size(), model.size()) << "step " << step;
    }
}

TEST_F(ChangedFromOutside, LookupsInAListOfTheHostsOwnDoNotDisturbThoseInTheCache)
{
    RandomHost host(52);
    driver.dataAreas.clear();
    QList<_DATA_> own;
    QList<_DATA_> ownModel;
    QList<_DATA_> model;
    for (int step = 0; step < 4000; ++step) {
        _DATA_ wanted = _DATA_();
        host.editKey(wanted);
        const bool inCache = host.below(2) == 0;
        QList<_DATA_>& list = inCache ? driver.dataAreas : own;
        QList<_DATA_>& plain = inCache ? model : ownModel;
        if (host.below(5) == 0) {
            host.change(list, plain);
        }
        ASSERT_EQ(getIndexOfDataArea(wanted.station, wanted.area, wanted.address, list),
                  plainFind(plain, wanted.station, wanted.area, wanted.address))
            << "step " << step;
    }
}

// Decoding into a cache that was changed from outside: the first matching record counts.

class EditedCacheDecoding : public DriverTest {};

TEST_F(EditedCacheDecoding, IntoACacheThatWasEmptiedMakesNewRecords)
{
    plan({key("R_W", 10, 2)});
    answer("01 03 04 00 01 00 02");
    driver.dataAreas.clear();
    EXPECT_EQ(answer("01 03 04 00 01 00 02"), 1);
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(device("R", 10), "01 00");
    EXPECT_EQ(device("R", 11), "02 00");
}

TEST_F(EditedCacheDecoding, IntoACacheThatWasRefilledFindsTheRecordsWhereTheyAreNow)
{
    plan({key("R_W", 10, 3)});
    answer("01 03 06 00 01 00 02 00 03");
    QList<_DATA_> turned;
    for (int i = 2; i >= 0; --i) {
        turned.append(driver.dataAreas.at(i));
    }
    driver.dataAreas = turned;
    EXPECT_EQ(answer("01 03 06 00 04 00 05 00 06"), 1);
    ASSERT_EQ(driver.dataAreas.size(), 3);
    EXPECT_EQ(toHex(driver.dataAreas.at(0).deviceValue, 2), "06 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).deviceValue, 2), "04 00");
}

TEST_F(EditedCacheDecoding, IntoRecordsWhoseKeysWereEditedGoesByTheNewKeys)
{
    plan({key("R_W", 10, 3)});
    answer("01 03 06 00 01 00 02 00 03");
    driver.dataAreas[0].address = 11;
    driver.dataAreas[1].address = 10;
    driver.dataAreas[2].area = name("T");
    EXPECT_EQ(answer("01 03 06 00 04 00 05 00 06"), 1);
    ASSERT_EQ(driver.dataAreas.size(), 4);
    EXPECT_EQ(toHex(driver.dataAreas.at(0).deviceValue, 2), "05 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(1).deviceValue, 2), "04 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).deviceValue, 2), "03 00");
    EXPECT_EQ(driver.dataAreas.at(3).address, 12);
    driver.dataAreas[1].station = 2;
    answer("01 03 06 00 07 00 08 00 09");
    ASSERT_EQ(driver.dataAreas.size(), 5);
    EXPECT_EQ(driver.dataAreas.at(4).address, 10);
}

TEST_F(EditedCacheDecoding, IntoAnEarlierRecordOfTheSameKeyLeavesTheLaterOneAlone)
{
    plan({key("R_W", 10, 2)});
    answer("01 03 04 00 01 00 02");
    _DATA_ twin = driver.dataAreas.at(1);
    driver.dataAreas.insert(0, twin);
    EXPECT_EQ(answer("01 03 04 00 04 00 05"), 1);
    ASSERT_EQ(driver.dataAreas.size(), 3);
    EXPECT_EQ(toHex(driver.dataAreas.at(0).deviceValue, 2), "05 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(1).deviceValue, 2), "04 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).deviceValue, 2), "02 00");
    driver.dataAreas[1].address = 11; // now an earlier twin by its edited key, but not the first
    driver.dataAreas[0].address = 99;
    EXPECT_EQ(answer("01 03 04 00 06 00 07"), 1);
    EXPECT_EQ(toHex(driver.dataAreas.at(1).deviceValue, 2), "07 00");
    EXPECT_EQ(toHex(driver.dataAreas.at(2).deviceValue, 2), "02 00");
}

TEST_F(EditedCacheDecoding, OfARecordMadeOfTheOldCacheByAnotherListGoesOn)
{
    plan({key("R_W", 10, 2)});
    answer("01 03 04 00 01 00 02");
    const QList<_DATA_> kept = driver.dataAreas;
    answer("01 03 04 00 04 00 05");
    driver.dataAreas = kept; // values and all, from before
    notices();
    EXPECT_EQ(answer("01 03 04 00 04 00 05"), 1);
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 10}, {7, 1, "R_W", 11}}));
    EXPECT_EQ(device("R", 10), "04 00");
}

TEST_F(EditedCacheDecoding, IntoACacheThatWasEditedThenUnwatchedThenEmptiedStartsAnew)
{
    plan({key("R_W", 10, 2)});
    driver.dataAreas[0].spareFlag = 0; // an edit all the same: the list is the host's own now
    plan({});
    driver.dataAreas.clear();
    EXPECT_EQ(read("R_W", 11, 1), "00 00");
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(driver.dataAreas.at(0).address, 11);
}

// A host appended a second record of word 1, right behind word 0's: the first one counts.
TEST_F(EditedCacheDecoding, ARunOfRecordsIsNotFollowedOntoASecondRecordOfAUnit)
{
    const QString area = name("R");
    driver.dataAreas.append(newUnit(1, area, 1));
    driver.dataAreas.append(newUnit(1, area, 0));
    driver.dataAreas.append(newUnit(1, area, 1));
    driver.dataAreas[2].deviceValue[0] = 0xAA;
    driver.dataAreas[2].deviceValue[1] = 0xBB;
    decodeValues(registerType(7), hex("00 00 BB AA"), 2, 0, 1, 0);
    EXPECT_EQ(read("R_W", 1, 1), "AA BB");
}

TEST_F(EditedCacheDecoding, ListsChangedFromOutsideBetweenPollsAndRepliesAreSeenAsTheyAre)
{
    plan({key("R_W", 0, 2)});
    poll();
    driver.dataAreas.clear();
    EXPECT_EQ(reply(withCrc("01 03 04 12 34 56 78")), 1);
    EXPECT_EQ(read("R_W", 0, 2), "34 12 78 56");
    poll();
    driver.readList.clear();
    driver.currentVars.clear();
    EXPECT_EQ(reply(withCrc("01 03 04 00 01 00 02")), 1);
    EXPECT_EQ(read("R_W", 0, 2), "01 00 02 00");
    EXPECT_EQ(poll(), "");
}

} // namespace
