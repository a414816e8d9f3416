#include "tool/port_table.h"

#include <set>

#include "line/shown_text.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

std::string usersText(const std::vector<PortUser>& users)
{
    std::string text;
    for (const PortUser& user : users)
        text += (text.empty() ? "" : ", ") + shownText(user.name) + " (" +
                std::to_string(user.process) + ")";
    return text.empty() ? "-" : text;
}

std::string accessText(const PortEntry& port)
{
    if (port.mayOpen)
        return "yes";
    return port.group.empty() ? "no" : "no, but group " + port.group + " may";
}

} // namespace

std::vector<std::string> portTable(const PortList& list)
{
    std::vector<Row> rows = {{"port", "adapter", "driver", "used by", "may you open it"}};
    for (const PortEntry& port : list.ports)
        rows.push_back({port.device, shownText(port.adapter),
                        port.driver.empty() ? "-" : port.driver, usersText(port.users),
                        accessText(port)});
    return aligned(rows, rows.front().size());
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
