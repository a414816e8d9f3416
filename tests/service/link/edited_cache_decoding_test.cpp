// Decoding into a cache that was changed from outside: the first matching record counts.
#include <gmock/gmock.h>

#include "world.h"

namespace {

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

} // namespace
