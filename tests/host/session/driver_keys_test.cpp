#include "session/driver_keys.h"

#include <gtest/gtest.h>

#include "session/single_request.h"

namespace dov417 {

namespace {

TEST(DriverKeys, SayWhetherItIsBitsThatAreCounted)
{
    Address address;
    address.station = 2;
    address.regName = "R_bit";
    address.first = 100;
    address.length = 3;
    address.width = Width::bit;
    EXPECT_EQ(keyOf(address).bitFlag, -1);
    address.width = Width::word;
    const KEY_ADDRESS words = keyOf(address);
    EXPECT_EQ(words.bitFlag, 0);
    EXPECT_EQ(words.stationNo, 2);
    EXPECT_EQ(words.address, 100);
    EXPECT_EQ(words.length, 3);
}

TEST(ASingleRequest, KnowsHowManyWordsItAsksFor)
{
    EXPECT_EQ(transmissionOf(QByteArray::fromHex("010300640005C416")).request.length, 5);
    EXPECT_EQ(transmissionOf(QByteArray::fromHex("0101000000203DD2")).request.length, 2) << "coils";
    EXPECT_EQ(transmissionOf(QByteArray::fromHex("0103006400C416")).request.length, 0) << "no read";
}

} // namespace

} // namespace dov417
