#include "driver/places.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using PlacesOfLibrary = LoadedLibrary;

std::string textOf(const RegisterPlace& place)
{
    std::string text = place.regName + (place.coils ? " coils " : " registers ") +
                       std::to_string(place.first) + " " + std::to_string(place.count) + " read " +
                       std::to_string(place.readFunction) + " write";
    for (const int function : place.writeFunctions)
        text += " " + std::to_string(function);
    return text;
}

TEST_F(PlacesOfLibrary, AreLearntFromTheFramesOfTheDriver)
{
    std::vector<std::string> found;
    for (const RegisterPlace& place : learnPlaces(library))
        found.push_back(textOf(place));
    EXPECT_THAT(
        found,
        ::testing::ElementsAre(
            "I_bit coils 0 2048 read 1 write 5", "Q_bit coils 2048 2048 read 1 write 5",
            "M_bit coils 4096 2048 read 1 write 5", "R_bit registers 1280 4000 read 3 write 16",
            "I_W coils 0 2048 read 1 write 15", "Q_W coils 2048 2048 read 1 write 15",
            "M_W coils 4096 2048 read 1 write 15", "R_W registers 1280 4000 read 3 write 6 16",
            "R_D registers 1280 4000 read 3 write 16", "T registers 384 128 read 3 write 6 16",
            "C registers 512 128 read 3 write 6 16"));
    EXPECT_EQ(library.driver->readList.size(), 0);
    FRAME_PRO frame = FRAME_PRO();
    EXPECT_EQ(library.intf_getSendFrame(&frame), 0) << "no write is left behind";
}

TEST_F(PlacesOfLibrary, AreNotLearntWhileSomebodyUsesTheDriver)
{
    const DriverClaim claim(library);
    EXPECT_THROW(learnPlaces(library), std::logic_error);
}

TEST(PrefixedNumbers, CountFromOneBehindTheirKind)
{
    EXPECT_EQ(prefixedNumber(true, 0, 2047), "00001");
    EXPECT_EQ(prefixedNumber(true, 2047, 2047), "02048");
    EXPECT_EQ(prefixedNumber(false, 1280, 5279), "41281");
    EXPECT_EQ(prefixedNumber(false, 0, 9998), "40001");
    EXPECT_EQ(prefixedNumber(false, 0, 9999), "400001");
    EXPECT_EQ(prefixedNumber(false, 65535, 65535), "465536");
}

} // namespace

} // namespace dov417
