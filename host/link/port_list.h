// The serial ports of this machine, and who uses them. None is opened: that alone resets some
// controllers.
#ifndef DOV417_LINK_PORT_LIST_H
#define DOV417_LINK_PORT_LIST_H

#include <string>
#include <vector>

namespace dov417 {

struct PortUser {
    long long process = 0;
    std::string name;
};

struct PortEntry {
    std::string device;          // "/dev/ttyUSB0"
    std::string adapter;         // what the adapter calls itself; "built in" where it is none
    std::string driver;          // "ftdi_sio"; empty where none is named
    std::vector<PortUser> users; // as far as one may see them
    bool mayOpen = false;        // whoever runs this
    std::string group;           // that may
};

struct PortList {
    std::vector<PortEntry> ports;
    bool sawAllPrograms = true; // else a port without a user may have one
};

// Where the system tells of them.
struct PortFolders {
    std::string devices = "/dev";
    std::string terminals = "/sys/class/tty";
    std::string processes = "/proc";
    std::string locks = "/run/lock"; // "LCK..ttyUSB0" holds a process number
};

// Empty where a group does not help.
std::string groupThatMayOpen(const std::string& device);

PortList listPorts(const PortFolders& folders = PortFolders());

} // namespace dov417

#endif
