// Numbers at the edges of what the inner functions take, where one more or one less would show.
#include "cache/unit_index.h"
#include "link/decoding.h"
#include "uncalled_functions.h"
#include "world.h"

namespace {

class EdgesOfDecoding : public DriverTest {};

TEST_F(EdgesOfDecoding, TheFirstRegisterTypeOfTheTableIsDecodedLikeTheOthers)
{
    analyzeFrameOfVal(withCrc("01 01 02 CD AB"), 1, 3, request("I_bit", 4, 1));
    EXPECT_EQ(read("I_W", 4, 1), "CD AB");
}

// Only the watched bits that changed are told, so a wrong byte of the old or new value would show.
TEST_F(EdgesOfDecoding, EachByteOfA32BitUnitIsComparedWithItsOwnPlace)
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

// The second word is new, but the two bytes before it read like the word that the cache holds.
TEST_F(EdgesOfDecoding, AWordIsComparedWithItsOwnBytesBehindAChangedOne)
{
    const RegisterType& type = registerType(7);
    decodeValues(type, hex("11 11 AA BB"), 2, 0, 1, 0);
    decodeValues(type, hex("11 AA BB 22"), 2, 0, 1, 0);
    EXPECT_EQ(read("R_W", 0, 2), "AA 11 22 BB");
}

// A host appended a second record of word 1, right behind word 0's: the first one counts.
TEST_F(EdgesOfDecoding, ARunOfRecordsIsNotFollowedOntoASecondRecordOfAUnit)
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

} // namespace
