#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tool/json_output.h"
#include "tool/port_table.h"

namespace dov417 {

namespace {

OutputJson toJson(const PortEntry& port)
{
    OutputJson users = OutputJson::array();
    for (const PortUser& user : port.users)
        users.push_back({{"process", user.process}, {"name", user.name}});
    return {{"port", port.device}, {"adapter", port.adapter}, {"driver", port.driver},
            {"usedBy", users},     {"mayOpen", port.mayOpen}, {"group", port.group}};
}

int runPorts(bool json)
{
    const PortList list = listPorts();
    if (json) {
        for (const PortEntry& port : list.ports)
            sayJson(toJson(port));
        return exitDone;
    }
    if (!list.ports.empty())
        for (const std::string& line : portTable(list))
            std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    for (const std::string& remark : portRemarks(list))
        std::fprintf(stderr, "dov417: %s\n", remark.c_str());
    return exitDone;
}

} // namespace

void addPortsCommand(CLI::App& app, Action& chosen)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App* command =
        app.add_subcommand("ports", "The serial ports, who uses them, and whether you may");
    addJsonFlag(*command, chosen, *json);
    command->footer("No port is opened. Examples:\n"
                    "  dov417 ports\n"
                    "  dov417 ports --json");
    command->callback([json, &chosen]() { chosen = [json]() { return runPorts(*json); }; });
}

} // namespace dov417
