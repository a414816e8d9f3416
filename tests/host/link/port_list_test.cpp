#include "link/port_list.h"

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace dov417 {

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Folders as the system fills them, with what a test puts there.
class PortListTest : public ::testing::Test {
protected:
    PortListTest() : root_(fs::canonical(folder_.path().toStdString()))
    {
        folders.devices = (root_ / "dev").string();
        folders.terminals = (root_ / "class").string();
        folders.processes = (root_ / "proc").string();
        folders.locks = (root_ / "lock").string();
        for (const char* name : {"dev", "class", "proc", "lock", "drivers"})
            fs::create_directory(root_ / name);
    }

    void write(const std::string& file, const std::string& text)
    {
        fs::create_directories((root_ / file).parent_path());
        std::ofstream(root_ / file) << text << "\n";
    }
    void link(const std::string& from, const std::string& to)
    {
        fs::create_directories((root_ / from).parent_path());
        fs::create_symlink(to, root_ / from);
    }
    void haveDriver(const std::string& device, const std::string& name)
    {
        fs::create_directories(root_ / "drivers" / name);
        link(device + "/driver", root_ / "drivers" / name);
    }

    // A terminal on a device of the machine.
    void haveTerminal(const std::string& name, const std::string& device)
    {
        fs::create_directories(root_ / device);
        write("dev/" + name, "");
        link("class/" + name + "/device", root_ / device);
    }
    void haveUsbAdapter(const std::string& name)
    {
        const std::string usb = "devices/pci/usb1/1-2";
        haveTerminal(name, usb + "/1-2:1.0/" + name);
        write(usb + "/idVendor", "0403");
        write(usb + "/idProduct", "6001");
        haveDriver(usb + "/1-2:1.0/" + name, "ftdi_sio");
        haveDriver("devices/pci", "pcieport");
    }
    void haveProcess(const std::string& number, const std::string& name, const std::string& device)
    {
        write("proc/" + number + "/comm", name);
        link("proc/" + number + "/fd/0", "/dev/null");
        link("proc/" + number + "/fd/7", device);
        link("proc/" + number + "/fd/8", device);
    }
    std::string device(const std::string& name) const
    {
        return folders.devices + "/" + name;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const PortEntry& port : listPorts(folders).ports)
            found.push_back(fs::path(port.device).filename().string());
        return found;
    }
    PortEntry only() const
    {
        const PortList list = listPorts(folders);
        EXPECT_EQ(list.ports.size(), 1U);
        return list.ports.empty() ? PortEntry() : list.ports.front();
    }

    QTemporaryDir folder_;
    fs::path root_;
    PortFolders folders;
};

TEST_F(PortListTest, IsEmptyWhereTheSystemTellsNothing)
{
    folders = {"/nowhere", "/nowhere", "/nowhere", "/nowhere"};
    EXPECT_THAT(listPorts(folders).ports, IsEmpty());
}

TEST_F(PortListTest, LeavesOutScreensPlacesWithoutAChipAndWhatHasNoName)
{
    fs::create_directories(root_ / "class/tty1");
    write("dev/tty1", "");
    haveTerminal("ttyS0", "devices/pnp/00:01");
    haveTerminal("ttyS1", "devices/platform");
    write("class/ttyS1/type", "0");
    write("class/ttyS0/type", "4");
    haveTerminal("ttyS2", "devices/pnp/00:02");
    fs::remove(root_ / "dev/ttyS2");
    EXPECT_THAT(names(), ElementsAre("ttyS0"));
}

TEST_F(PortListTest, SortsByNumber)
{
    for (const char* name : {"ttyS10", "ttyUSB0", "ttyS2", "ttyACM1"})
        haveTerminal(name, std::string("devices/") + name);
    EXPECT_THAT(names(), ElementsAre("ttyACM1", "ttyS2", "ttyS10", "ttyUSB0"));
}

TEST_F(PortListTest, NamesTheAdapterAsItCallsItself)
{
    haveUsbAdapter("ttyUSB0");
    EXPECT_EQ(only().adapter, "USB 0403:6001");
    write("devices/pci/usb1/1-2/product", "FT232R");
    EXPECT_EQ(only().adapter, "FT232R");
    write("devices/pci/usb1/1-2/manufacturer", "FTDI");
    EXPECT_EQ(only().adapter, "FTDI FT232R");
    write("devices/pci/usb1/1-2/serial", "A5\033[2J");
    EXPECT_EQ(only().adapter, "FTDI FT232R, serial number A5?[2J") << "no controls of a terminal";
    EXPECT_EQ(only().driver, "ftdi_sio");
}

TEST_F(PortListTest, NamesTheChipsDriverBehindThoseOfThePort)
{
    haveTerminal("ttyS0", "devices/pnp/00:01/00:01:0/00:01:0.0");
    haveDriver("devices/pnp/00:01/00:01:0/00:01:0.0", "port");
    haveDriver("devices/pnp/00:01/00:01:0", "ctrl");
    haveDriver("devices/pnp/00:01", "serial");
    EXPECT_EQ(only().driver, "serial");
    EXPECT_EQ(only().adapter, "built in");
}

TEST_F(PortListTest, NamesNoDriverOfTheBusForThePorts)
{
    haveTerminal("ttyX0", "devices/a/b/c/d");
    haveDriver("devices/a", "pcieport");
    EXPECT_EQ(only().driver, "");
}

TEST_F(PortListTest, NamesEachProgramOnceThatHasThePortOpen)
{
    haveUsbAdapter("ttyUSB0");
    haveProcess("812", "modem-manager", device("ttyUSB0"));
    haveProcess("813", "other", device("ttyUSB1"));
    const PortEntry port = only();
    ASSERT_EQ(port.users.size(), 1U);
    EXPECT_EQ(port.users.front().process, 812);
    EXPECT_EQ(port.users.front().name, "modem-manager");
    EXPECT_TRUE(listPorts(folders).sawAllPrograms);
}

TEST_F(PortListTest, BelievesALockFileOfAProgramThatRuns)
{
    haveUsbAdapter("ttyUSB0");
    write("lock/LCK..ttyUSB0", "       812");
    EXPECT_THAT(only().users, IsEmpty()) << "left behind by one that is gone";
    write("proc/812/comm", "minicom");
    ASSERT_EQ(only().users.size(), 1U);
    EXPECT_EQ(only().users.front().name, "minicom");
    write("lock/LCK..ttyUSB0", "somebody");
    EXPECT_THAT(only().users, IsEmpty());
}

TEST_F(PortListTest, NamesAGroupOnlyWhereItMayReadAndWrite)
{
    haveUsbAdapter("ttyUSB0");
    fs::permissions(device("ttyUSB0"), fs::perms(0660));
    EXPECT_NE(only().group, "");
    EXPECT_TRUE(only().mayOpen);
    fs::permissions(device("ttyUSB0"), fs::perms(0640));
    EXPECT_EQ(only().group, "");
}

} // namespace

} // namespace dov417
