#include "link/port_list.h"

#include <QFileInfo>
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>
#include <unistd.h>

namespace dov417 {

namespace {

namespace fs = std::filesystem;

constexpr int maxLevelsToDriver = 3;  // from the port up to its chip
constexpr int maxLevelsToAdapter = 6; // from the port up to its USB device

// One line of a file, fit for a terminal: an adapter may call itself anything.
std::string lineOf(const fs::path& file)
{
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    for (char& character : line)
        if (std::iscntrl(static_cast<unsigned char>(character)) != 0)
            character = '?';
    return line;
}

// A process number, 0 where the text is none.
long long numberOf(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos || text.size() - first > 10 ||
        text.find_first_not_of("0123456789", first) != std::string::npos)
        return 0;
    return std::stoll(text.substr(first));
}

std::string targetName(const fs::path& link)
{
    std::error_code none;
    return fs::read_symlink(link, none).filename().string();
}

// Newer kernels put devices of their own between a port and its chip.
bool isOfTheChip(const std::string& driver)
{
    return !driver.empty() && driver != "port" && driver != "ctrl";
}

std::string driverOf(fs::path device)
{
    for (int level = 0; level < maxLevelsToDriver; ++level) {
        std::string driver = targetName(device / "driver");
        if (isOfTheChip(driver))
            return driver;
        device = device.parent_path();
    }
    return std::string();
}

std::string adapterOf(fs::path device)
{
    for (int level = 0; level < maxLevelsToAdapter; ++level) {
        const std::string vendor = lineOf(device / "idVendor");
        if (!vendor.empty()) {
            const std::string product = lineOf(device / "product");
            const std::string serial = lineOf(device / "serial");
            std::string text = lineOf(device / "manufacturer");
            if (!text.empty() && !product.empty())
                text += ' ';
            text += product;
            if (text.empty())
                text.append("USB ").append(vendor).append(":").append(lineOf(device / "idProduct"));
            if (!serial.empty())
                text.append(", serial number ").append(serial);
            return text;
        }
        device = device.parent_path();
    }
    return "built in";
}

// The names of the folder's entries, empty where it cannot be read.
std::vector<std::string> namesIn(const fs::path& folder, std::error_code& error)
{
    std::vector<std::string> names;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        names.push_back(entry->path().filename().string());
    return names;
}

// ttyS2 before ttyS10.
bool comesBefore(const PortEntry& a, const PortEntry& b)
{
    const auto split = [](const std::string& text) {
        const std::size_t end = text.find_last_not_of("0123456789") + 1;
        return std::make_pair(text.substr(0, end), numberOf(text.substr(end)));
    };
    return split(a.device) < split(b.device);
}

using Users = std::map<std::string, std::vector<PortUser>>; // by device

void addUser(Users& users, const std::string& device, const fs::path& process, long long number)
{
    std::vector<PortUser>& known = users[device];
    const bool isKnown = std::any_of(known.begin(), known.end(), [number](const PortUser& user) {
        return user.process == number;
    });
    if (!isKnown)
        known.push_back({number, lineOf(process / "comm")});
}

// Who has a file of the devices' folder open. False where not every process may be looked at.
bool addThoseWhoHoldIt(Users& users, const PortFolders& folders)
{
    bool sawAll = true;
    std::error_code error;
    for (const std::string& name : namesIn(folders.processes, error)) {
        const long long number = numberOf(name);
        if (number == 0)
            continue;
        const fs::path process = fs::path(folders.processes) / name;
        std::error_code refused;
        for (const std::string& file : namesIn(process / "fd", refused)) {
            std::error_code none;
            const std::string target = fs::read_symlink(process / "fd" / file, none).string();
            if (target.compare(0, folders.devices.size() + 1, folders.devices + "/") == 0)
                addUser(users, target, process, number);
        }
        sawAll = sawAll && refused != std::errc::permission_denied;
    }
    return sawAll;
}

// Who has said in a lock file that it uses the port, and still runs.
void addThoseWhoLockIt(Users& users, const PortFolders& folders, const std::string& device)
{
    const std::string name = fs::path(device).filename().string();
    const long long number = numberOf(lineOf(fs::path(folders.locks) / ("LCK.." + name)));
    const fs::path process = fs::path(folders.processes) / std::to_string(number);
    std::error_code none;
    if (fs::exists(process, none))
        addUser(users, device, process, number);
}

} // namespace

std::string groupThatMayOpen(const std::string& device)
{
    const QFileInfo file(QString::fromStdString(device));
    const QFile::Permissions group = QFile::ReadGroup | QFile::WriteGroup;
    return (file.permissions() & group) == group ? file.group().toStdString() : std::string();
}

PortList listPorts(const PortFolders& folders)
{
    PortList list;
    std::error_code error;
    for (const std::string& name : namesIn(folders.terminals, error)) {
        const fs::path terminal = fs::path(folders.terminals) / name;
        std::error_code none;
        const fs::path device = fs::canonical(terminal / "device", none);
        PortEntry port;
        port.device = folders.devices + "/" + name;
        // Without a device it is a screen; of type 0 it is a place where no chip was found.
        if (device.empty() || lineOf(terminal / "type") == "0" || !fs::exists(port.device, none))
            continue;
        port.adapter = adapterOf(device);
        port.driver = driverOf(device);
        port.mayOpen = access(port.device.c_str(), R_OK | W_OK) == 0;
        port.group = groupThatMayOpen(port.device);
        list.ports.push_back(port);
    }
    std::sort(list.ports.begin(), list.ports.end(), comesBefore);
    Users users;
    list.sawAllPrograms = addThoseWhoHoldIt(users, folders);
    for (PortEntry& port : list.ports) {
        addThoseWhoLockIt(users, folders, port.device);
        port.users = users[port.device];
    }
    return list;
}

} // namespace dov417
