#include "driver/areas.h"

#include "loaded_library.h"

namespace dov417 {

namespace {

using AreasOfLibrary = LoadedLibrary;

TEST_F(AreasOfLibrary, AreLearntFromTheFramesOfTheDriver)
{
    std::vector<std::string> found;
    for (const Area& area : learnAreas(library))
        found.push_back(area.regName + (area.coils ? " coils " : " registers ") +
                        std::to_string(area.base) + " " + std::to_string(area.words));
    EXPECT_THAT(found, ::testing::ElementsAre("I_W coils 0 128", "Q_W coils 2048 128",
                                              "M_W coils 4096 128", "R_W registers 1280 4000",
                                              "T registers 384 128", "C registers 512 128"));
    EXPECT_EQ(library.driver->readList.size(), 0);
}

TEST_F(AreasOfLibrary, AreNotLearntWhileSomebodyUsesTheDriver)
{
    library.driver->mergeGap = 417;
    {
        const DriverClaim claim(library);
        EXPECT_THROW(learnAreas(library), std::logic_error);
        EXPECT_EQ(library.driver->mergeGap, 417);
    }
    EXPECT_EQ(learnAreas(library).size(), 6U);
}

} // namespace

} // namespace dov417
