#include "tool/port_table.h"

#include <algorithm>
#include <array>
#include <set>

namespace dov417 {

namespace {

using PortRow = std::array<std::string, 5>;

std::string usersText(const std::vector<PortUser>& users)
{
    std::string text;
    for (const PortUser& user : users)
        text += (text.empty() ? "" : ", ") + user.name + " (" + std::to_string(user.process) + ")";
    return text.empty() ? "-" : text;
}

std::string accessText(const PortEntry& port)
{
    if (port.mayOpen)
        return "yes";
    return port.group.empty() ? "no" : "no, but group " + port.group + " may";
}

// Characters, of which one may have several bytes.
std::size_t widthInCharacters(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

} // namespace

std::vector<std::string> portTable(const PortList& list)
{
    std::vector<PortRow> rows = {{"port", "adapter", "driver", "used by", "may you open it"}};
    for (const PortEntry& port : list.ports)
        rows.push_back({port.device, port.adapter, port.driver.empty() ? "-" : port.driver,
                        usersText(port.users), accessText(port)});
    std::array<std::size_t, 5> widths{};
    for (const PortRow& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths.at(i) = std::max(widths.at(i), widthInCharacters(row.at(i)));
    std::vector<std::string> lines;
    for (const PortRow& row : rows) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            line += row.at(i) + std::string(widths.at(i) - widthInCharacters(row.at(i)) + 2, ' ');
        lines.push_back(line + row.back());
    }
    return lines;
}

std::vector<std::string> portRemarks(const PortList& list)
{
    if (list.ports.empty())
        return {"there is no serial port; once an adapter is plugged in, 'sudo dmesg' shows what "
                "became of it"};
    std::vector<std::string> remarks;
    std::set<std::string> groups;
    for (const PortEntry& port : list.ports)
        if (!port.mayOpen && !port.group.empty())
            groups.insert(port.group);
    remarks.reserve(groups.size() + 1);
    for (const std::string& group : groups) {
        std::string remark = "'sudo adduser $USER ";
        remark.append(group).append("' and a new login let you in where group ");
        remarks.push_back(remark.append(group).append(" may"));
    }
    if (!list.sawAllPrograms)
        remarks.emplace_back("programs of other users are hidden from you, so a port may be in "
                             "use all the same; 'sudo dov417 ports' sees them");
    return remarks;
}

} // namespace dov417
