// Storing written bits over word and byte units.
#include "cache_world.h"

namespace {

using GenericStoringBits = CacheTest;

TEST_F(GenericStoringBits, BitsOverWordUnitsAreStoredInTheirWords)
{
    for (const char* dataBits : {"1", "8"}) {
        driver.dataAreas.clear();
        store(registerRow("X_bit", dataBits, "16"), 14, 4, "01 01 00 01");
        EXPECT_EQ(written(), Units({"X0 00 C0 00 00", "X1 02 00 00 00"})) << dataBits;
        EXPECT_EQ(pendingBits("X", 0), 0x50000000u);
        EXPECT_EQ(pendingBits("X", 1), 5u);
    }
}

TEST_F(GenericStoringBits, BitsOfATimerOverWordUnitsAreAnnouncedAsTheTimer)
{
    put("X", 0, "");
    watchAll(7, 0xFFFF);
    store(registerRow("X_bit", "1", "16", "1"), 3, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 0}}));
}

TEST_F(GenericStoringBits, BitsOverByteUnitsAreStoredInTheirBytesAndNotCounted)
{
    for (const char* dataBits : {"1", "8"}) {
        driver.dataAreas.clear();
        put("X", 0, "0F 77");
        store(registerRow("X_bit", dataBits, "8"), 6, 4, "01 02 00 01");
        EXPECT_EQ(written(), Units({"X0 4F 00 00 00", "X1 02 00 00 00"})) << dataBits;
        EXPECT_EQ(pendingBits("X", 0), 0u);
        EXPECT_EQ(pendingBits("X", 1), 0u);
        EXPECT_EQ(device("X", 0), "0F 77 00 00");
    }
}

TEST_F(GenericStoringBits, ARepeatedBitOverByteUnitsIsNotCountedWhateverIsQueued)
{
    const RegisterType type = registerRow("X_bit", "1", "8");
    driver.writeList = {request("X_bit", 3, 1), request("X_bit", 3, 1)};
    store(type, 3, 1, "01");
    store(type, 3, 1, "00");
    store(type, 3, 1, "01");
    EXPECT_EQ(pendingBits("X", 0), 0u);
    EXPECT_TRUE(isPending("X", 0));
}

TEST_F(GenericStoringBits, ABitThatReadsTheSameOverByteUnitsIsPendingButNotAnnounced)
{
    put("X", 0, "0F");
    watchAll(127, 0xFF);
    store(registerRow("X_bit", "1", "8"), 3, 1, "01");
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(written(), Units({"X0 0F 00 00 00"}));
}

TEST_F(GenericStoringBits, ABitOverAPendingByteUnitIsAnnouncedFromWhatWasWritten)
{
    putPending("X", 2, "FF", "01");
    watchAll(1, 0xFF);
    store(registerRow("X_bit", "1", "8"), 19, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 19}, {7, 1, "X_B", 2}}));
    EXPECT_EQ(written(), Units({"X2 09 00 00 00"}));
}

// The change of a settled byte is seen against the device value, but told from what was written
// last.
TEST_F(GenericStoringBits, ABitOverASettledByteUnitIsAnnouncedFromThePendingByteToo)
{
    putPending("X", 2, "00", "FE");
    driver.dataAreas[0].writePending = 0;
    watchAll(1, 0xFF);
    store(registerRow("X_bit", "1", "8"), 16, 1, "01");
    // FE to 01: every bit differs; from the device value 00 it would be bit 0 alone
    Notices all;
    for (int k = 0; k < 8; ++k) {
        all.push_back({7, 1, "X_bit", 16 + k});
    }
    all.push_back({7, 1, "X_B", 2});
    EXPECT_EQ(notices(), all);
    EXPECT_EQ(written(), Units({"X2 01 00 00 00"}));
}

TEST_F(GenericStoringBits, ABitWhoseByteWasWrittenSoOnceIsNotAnnouncedAsABit)
{
    putPending("X", 2, "00", "01");
    driver.dataAreas[0].writePending = 0;
    watchAll(1, 0xFF);
    store(registerRow("X_bit", "1", "8"), 16, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_B", 2}}));
}

TEST_F(GenericStoringBits, ABitOfATimerOverByteUnitsIsAnnouncedAsTheTimerOnlyWhilePending)
{
    const RegisterType timer = registerRow("X_bit", "1", "8", "1");
    put("X", 2, "");
    watchAll(1, 0xFF);
    store(timer, 16, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X_bit", 16}, {7, 1, "X_B", 2}}));
    store(timer, 17, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "X", 2}}));
}

TEST_F(GenericStoringBits, ABitOverAByteUnitIsAnnouncedBeforeItIsStored)
{
    put("X", 2, "");
    watchAll(1, 0);
    std::string seen;
    whenTold([&](const Notice&) { seen = readRow(registerRow("X_B", "8", "8"), 2, 1); });
    store(registerRow("X_bit", "1", "8"), 16, 1, "01");
    EXPECT_EQ(seen, "00");
}

} // namespace
