// Decoding for register tables with units of 1, 8 and 32 bits; this controller's table has none.
#include <gmock/gmock.h>

#include "cache/data_areas.h"
#include "cache_world.h"
#include "link/decoding.h"

using ::testing::IsEmpty;

namespace {

class UnitWidthDecoding : public DriverTest {
protected:
    static void decode(const RegisterType& type, const char* bytes, int count, int position,
                       int address)
    {
        decodeValues(type, hex(bytes), count, position, 1, address);
    }

    static std::string device(const char* area, int address)
    {
        return toHex(unit(1, area, address).deviceValue, 4);
    }
};

// Bits.

TEST_F(UnitWidthDecoding, BitsAreUnpackedFromTheLeastSignificantOne)
{
    const RegisterType bits = registerRow("B", "1", "1");
    decode(bits, "01 01 02 85 02", 10, 3, 20);
    ASSERT_EQ(driver.dataAreas.size(), 10);
    const char* expected[] = {"01", "00", "01", "00", "00", "00", "00", "01", "00", "01"};
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(toHex(unit(1, "B", 20 + i).deviceValue, 1), expected[i]) << i;
    }
}

TEST_F(UnitWidthDecoding, BitsPastTheEndAreZero)
{
    const RegisterType bits = registerRow("B", "1", "1");
    decode(bits, "FF FF", 16, 0, 20);
    notices();
    decode(bits, "FF", 16, 0, 20);
    EXPECT_EQ(toHex(unit(1, "B", 27).deviceValue, 1), "01");
    EXPECT_EQ(toHex(unit(1, "B", 28).deviceValue, 1), "00");
    EXPECT_EQ(toHex(unit(1, "B", 35).deviceValue, 1), "00");
}

TEST_F(UnitWidthDecoding, AChangedBitIsAnnouncedUnderItsAreaAlone)
{
    const RegisterType bits = registerRow("B", "1", "1");
    markViews(bits, 1, 20, 3);
    decode(bits, "05", 3, 0, 20);
    EXPECT_EQ(notices(), (Notices{{7, 1, "B", 20}, {7, 1, "B", 22}}));
    decode(bits, "05", 3, 0, 20);
    EXPECT_THAT(notices(), IsEmpty());
    std::string seen;
    whenTold([&](const Notice&) { seen = device("B", 21); });
    decode(bits, "07", 3, 0, 20);
    EXPECT_EQ(notices(), (Notices{{7, 1, "B", 21}}));
    EXPECT_EQ(seen, "01 00 00 00");
}

// Bytes.

TEST_F(UnitWidthDecoding, BytesTakeOneByteAUnit)
{
    const RegisterType bytes = registerRow("B_B", "8", "8");
    markViews(bytes, 1, 20, 2);
    decode(bytes, "01 03 03 12 34 56", 3, 3, 20);
    EXPECT_EQ(device("B", 20), "12 00 00 00");
    EXPECT_EQ(device("B", 21), "34 00 00 00");
    EXPECT_EQ(device("B", 22), "56 00 00 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "B_B", 20}, {7, 1, "B_B", 21}}));
    decode(bytes, "01 03 03 12 35", 2, 3, 20);
    EXPECT_EQ(notices(), (Notices{{7, 1, "B_B", 21}}));
}

TEST_F(UnitWidthDecoding, BytesAnnounceTheirChangedBitsAndTheWiderViews)
{
    markViews(registerRow("B_bit", "1", "8"), 1, 160, 8); // the bits of byte 20
    markViews(registerRow("B_W", "16", "8"), 1, 19, 1);   // bytes 19 and 20
    markViews(registerRow("B_D", "32", "8"), 1, 17, 2);   // bytes 17 to 20
    decode(registerRow("B_B", "8", "8"), "81", 1, 0, 20);
    EXPECT_EQ(
        notices(),
        (Notices{
            {7, 1, "B_bit", 160}, {7, 1, "B_bit", 167}, {7, 1, "B_W", 19}, {7, 1, "B_D", 17}}));
    decode(registerRow("B_B", "8", "8"), "80", 1, 0, 20);
    EXPECT_EQ(notices(), (Notices{{7, 1, "B_bit", 160}, {7, 1, "B_W", 19}, {7, 1, "B_D", 17}}));
}

TEST_F(UnitWidthDecoding, BytesPastTheEndAreZero)
{
    const RegisterType bytes = registerRow("B_B", "8", "8");
    decode(bytes, "12 34", 2, 0, 20);
    decode(bytes, "12", 2, 0, 20);
    EXPECT_EQ(device("B", 21), "00 00 00 00");
}

// Words, of any row.

TEST_F(UnitWidthDecoding, WordsOfATimerAreAnnouncedUnderTheAreaAlone)
{
    const RegisterType timers = registerRow("Z_W", "16", "16", "1");
    markViews(timers, 1, 20, 1);
    decode(timers, "12 34", 1, 0, 20);
    EXPECT_EQ(device("Z", 20), "34 12 00 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "Z", 20}}));
}

TEST_F(UnitWidthDecoding, WordsOfTheAreasIQAndMComeLowByteFirst)
{
    for (const char* regName : {"I_W", "Q_W", "M_W", "M_bit"}) {
        decode(registerRow(regName, "16", "16"), "12 34", 1, 0, 20);
        const std::string area(1, regName[0]);
        EXPECT_EQ(device(area.c_str(), 20), "12 34 00 00") << regName;
    }
    decode(registerRow("MM_W", "16", "16"), "12 34", 1, 0, 20);
    EXPECT_EQ(device("MM", 20), "34 12 00 00");
}

// Double words.

TEST_F(UnitWidthDecoding, DoubleWordsHoldTheLowOrderRegisterFirst)
{
    const RegisterType wide = registerRow("B_D", "32", "32");
    markViews(wide, 1, 20, 4);
    decode(wide, "01 03 08 12 34 56 78 9A BC DE F0", 2, 3, 20);
    EXPECT_EQ(device("B", 20), "34 12 78 56");
    EXPECT_EQ(device("B", 21), "BC 9A F0 DE");
    EXPECT_EQ(notices(), (Notices{{7, 1, "B_D", 20}, {7, 1, "B_D", 21}}));
}

TEST_F(UnitWidthDecoding, ADoubleWordIsNewWhereAnyOfItsFourBytesIs)
{
    const RegisterType wide = registerRow("B_D", "32", "32");
    markViews(wide, 1, 20, 2);
    for (const char* bytes :
         {"00 01 00 00", "01 01 00 00", "01 01 00 01", "01 01 01 01", "01 01 01 00"}) {
        decode(wide, bytes, 1, 0, 20);
        EXPECT_EQ(notices(), (Notices{{7, 1, "B_D", 20}})) << bytes;
    }
    decode(wide, "01 01 01 00", 1, 0, 20);
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(UnitWidthDecoding, DoubleWordsPastTheEndAreZero)
{
    const RegisterType wide = registerRow("B_D", "32", "32");
    decode(wide, "12 34 56", 2, 0, 20);
    EXPECT_EQ(device("B", 20), "34 12 00 56");
    EXPECT_EQ(device("B", 21), "00 00 00 00");
}

// All widths.

TEST_F(UnitWidthDecoding, EveryWidthSettlesAnOverriddenValueWhenNoWriteIsQueued)
{
    struct Row {
        RegisterType type;
        const char* bytes;
    };
    const Row rows[] = {{registerRow("B", "1", "1"), "01"},
                        {registerRow("B_B", "8", "8"), "12"},
                        {registerRow("B_W", "16", "16"), "12 34"},
                        {registerRow("B_D", "32", "32"), "12 34 56 78"}};
    for (const Row& row : rows) {
        driver.dataAreas.clear();
        _DATA_ pending = _DATA_();
        pending.station = 1;
        pending.area = name("B");
        pending.address = 20;
        pending.writePending = 1;
        driver.dataAreas.append(pending);
        decode(row.type, row.bytes, 1, 0, 20);
        EXPECT_EQ(unit(1, "B", 20).writePending, 0) << text(row.type.name);
    }
}

TEST_F(UnitWidthDecoding, AnyOtherWidthStoresNothing)
{
    decode(registerRow("B_W", "16", "64"), "12 34 56 78", 2, 0, 20);
    decode(registerRow("B_W", "16", "0"), "12 34 56 78", 2, 0, 20);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

class EdgesOfDecoding32 : public DriverTest {};

// Only the watched bits that changed are told, so a wrong byte of the old or new value would show.
TEST_F(EdgesOfDecoding32, EachByteOfA32BitUnitIsComparedWithItsOwnPlace)
{
    const QString row[rangeFieldCount] = {name("DDD"), name("0"),  name("127"), name("32"),
                                          name("RW"),  name("32"), name("0")};
    const RegisterType type = deriveRegisterType(name("X_D"), row, 3, 0);
    decodeValues(type, hex("22 11 44 33"), 1, 0, 1, 5);
    driver.dataAreas[0].bitMonitor = 0xFFFFFFFFu;
    notices();
    decodeValues(type, hex("22 11 45 33"), 1, 0, 1, 5); // bit 0 of the second register's low byte
    decodeValues(type, hex("22 11 45 B3"), 1, 0, 1, 5);
    decodeValues(type, hex("A2 11 45 B3"), 1, 0, 1, 5);
    decodeValues(type, hex("A2 10 45 B3"), 1, 0, 1, 5);
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 5 * 32 + 24},
                                  {7, 1, "X_bit", 5 * 32 + 23},
                                  {7, 1, "X_bit", 5 * 32 + 15},
                                  {7, 1, "X_bit", 5 * 32 + 0}}));
}

} // namespace
