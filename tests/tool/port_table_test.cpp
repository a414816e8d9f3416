#include "tool/port_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

PortEntry adapter()
{
    PortEntry port;
    port.device = "/dev/ttyUSB0";
    port.adapter = "Müller RS-485";
    port.driver = "ftdi_sio";
    port.users = {{812, "minicom"}, {9, "screen"}};
    port.group = "dialout";
    return port;
}

PortEntry chip()
{
    PortEntry port;
    port.device = "/dev/ttyS0";
    port.adapter = "built in";
    port.mayOpen = true;
    port.group = "dialout";
    return port;
}

TEST(PortTable, HasNoOrderForATerminalInWhatDevicesAndProgramsCallThemselves)
{
    PortEntry port = adapter();
    port.adapter = "a\x1B[2K";
    port.users = {{812, "b\xC2\x9B 2J"}};
    const std::vector<std::string> table = portTable({{port}, true});
    ASSERT_EQ(table.size(), 2u);
    EXPECT_THAT(table.at(1), ::testing::HasSubstr(" a?[2K "));
    EXPECT_THAT(table.at(1), ::testing::HasSubstr(" b? 2J (812) "));
}

TEST(PortTable, HasAdapterDriverUsersAndAccess)
{
    EXPECT_THAT(portTable({{chip(), adapter()}, true}),
                ElementsAre("port          adapter        driver    used by                    "
                            "may you open it",
                            "/dev/ttyS0    built in       -         -                          "
                            "yes",
                            "/dev/ttyUSB0  Müller RS-485  ftdi_sio  minicom (812), screen (9)  "
                            "no, but group dialout may"));
}

TEST(PortTable, NamesNoGroupWhereNoneMay)
{
    PortEntry port = adapter();
    port.group.clear();
    port.users.clear();
    EXPECT_THAT(portTable({{port}, true}),
                ElementsAre("port          adapter        driver    used by  may you open it",
                            "/dev/ttyUSB0  Müller RS-485  ftdi_sio  -        no"));
    EXPECT_THAT(portRemarks({{port}, true}), IsEmpty());
}

TEST(PortTable, SaysOnceWhatHelpsWhereAGroupMay)
{
    EXPECT_THAT(portRemarks({{adapter(), adapter()}, true}),
                ElementsAre("'sudo adduser $USER dialout' and a new login let you in where group "
                            "dialout may"));
    EXPECT_THAT(portRemarks({{chip()}, true}), IsEmpty()) << "one may already";
}

TEST(PortTable, SaysThatProgramsOfOthersAreHidden)
{
    EXPECT_THAT(portRemarks({{chip()}, false}),
                ElementsAre("programs of other users are hidden from you, so a port may be in use "
                            "all the same; 'sudo dov417 ports' sees them"));
}

TEST(PortTable, SaysWhereNewAdaptersAreToldOf)
{
    EXPECT_THAT(portRemarks({{}, false}),
                ElementsAre("there is no serial port; once an adapter is plugged in, 'sudo dmesg' "
                            "shows what became of it"));
}

} // namespace

} // namespace dov417
