#include "driver/library.h"

#include <dlfcn.h>

#include "driver/default_line.h"
#include "driver/registers.h"
#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(LibraryLoading, ResolvesWhatAPanelResolves)
{
    const Library library(DOV417_LIBRARY);
    EXPECT_EQ(library.intf_getVersion(), QString::fromLatin1("2.0.0.0"));
    ASSERT_NE(library.driver, nullptr);
    EXPECT_EQ(library.driver->regNames.size(), 11);
    EXPECT_THAT(library.path(), HasSubstr("libdov417modbus.so"));
}

TEST(LibraryLoading, LeavesNothingBehind)
{
    QString version;
    {
        const Library library(DOV417_LIBRARY);
        version = library.intf_getVersion();
    }
    EXPECT_EQ(dlopen(DOV417_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_EQ(version, QString::fromLatin1("2.0.0.0"));
}

TEST(LibraryLoading, SaysWhichFileItCannotLoad)
{
    EXPECT_THAT(complaint([] { Library("/no/such/library.so"); }),
                HasSubstr("cannot load the driver library: /no/such/library.so"));
}

TEST(LibraryLoading, RefusesALibraryOfAnotherQt)
{
    // Its constructor would end the process.
    EXPECT_THAT(
        complaint([] { Library(DOV417_OTHER_QT_LIBRARY); }),
        AllOf(HasSubstr(DOV417_OTHER_QT_LIBRARY " is made for Qt "),
              HasSubstr(", this program for Qt " + std::to_string(QT_VERSION_MAJOR) + ";")));
}

TEST(LibraryLoading, SaysWhatALibraryLacks)
{
    EXPECT_THAT(complaint([] { Library("/proc/self/exe"); }), HasSubstr("cannot load"));
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&qVersion), &info), 0);
    EXPECT_THAT(complaint([&] { Library library(info.dli_fname); }),
                HasSubstr("is no driver library: it does not export intf_getVersion"));
}

using Driver = LoadedLibrary;

TEST_F(Driver, HasOneClaimAtATime)
{
    {
        const DriverClaim claim(library);
        EXPECT_THROW(DriverClaim another(library), std::logic_error);
        EXPECT_THROW(DriverClaim another(library), std::logic_error) << "the first one still holds";
    }
    EXPECT_NO_THROW(DriverClaim next(library));
    EXPECT_NO_THROW(DriverClaim next(library));
}

using DefaultLine = LoadedLibrary;

TEST_F(DefaultLine, IsWhatTheLibraryReportsAsItsOwn)
{
    EXPECT_EQ(defaultLine(library), "38400,8,EVEN,1");
}

using Registers = LoadedLibrary;

TEST_F(Registers, AreDescribedByTheLibrary)
{
    std::vector<std::string> names;
    for (const RegisterType& type : registerTypes(library))
        names.push_back(type.name);
    EXPECT_THAT(names, ElementsAre("I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W", "M_W", "R_W",
                                   "R_D", "T", "C"));
    const auto type = registerType(library, "R_D");
    ASSERT_TRUE(type.has_value());
    EXPECT_EQ(type->format, "DDDD");
    EXPECT_EQ(type->highest, "3998");
    EXPECT_EQ(type->width, Width::doubleWord);
    EXPECT_EQ(type->access, "read and write");
    EXPECT_FALSE(registerType(library, "R_d").has_value());
}

TEST_F(Registers, WriteTheirAddressesInTheirOwnForm)
{
    EXPECT_EQ(addressText(library, "M_bit", 21), "1.5");
    EXPECT_EQ(addressText(library, "R_W", 3999), "3999");
    EXPECT_EQ(addressText(library, "R_W", 5000), "5000");
    EXPECT_EQ(addressText(library, "X", 7), "7");
    EXPECT_THAT(addressTexts(library, "M_bit", 21, 3, 11), ElementsAre("1.5", "2.0", "2.11"));
    EXPECT_THAT(addressTexts(library, "R_W", 3998, 4, 1),
                ElementsAre("3998", "3999", "4000", "4001"));
    EXPECT_THAT(addressTexts(library, "X", 7, 2, 2), ElementsAre("7", "9"));
    EXPECT_EQ(areaOf("M_bit"), "M");
    EXPECT_EQ(areaOf("T"), "T");
}

} // namespace

} // namespace dov417
