#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "driver/default_line.h"
#include "driver/places.h"
#include "driver/registers.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

struct InfoOptions : LineOptions {
    bool json = false;
};

const char* widthText(Width width)
{
    switch (width) {
    case Width::bit:
        return "bit";
    case Width::word:
        return "16 bits";
    case Width::doubleWord:
        return "32 bits";
    case Width::quadWord:
        return "64 bits";
    case Width::text:
        break; // no register's own
    }
    return "";
}

// Protocol name: the last item before the register names.
std::string protocolName(const Library& library, std::size_t registers)
{
    QString parameter;
    library.intf_getDriverParameter(parameter);
    const QStringList items = parameter.split(QLatin1Char(','));
    const auto at = items.size() - static_cast<int>(registers) - 1;
    return at < 0 ? std::string() : items.at(at).toStdString();
}

std::string listed(const std::set<int>& functions)
{
    std::string text;
    for (const int function : functions)
        text += (text.empty() ? "" : ", ") + std::to_string(function);
    return text.empty() ? "-" : text;
}

std::string range(const std::string& first, const std::string& last)
{
    return first + ".." + last;
}

// For whoever sets up another master.
void printPlaces(const Library& library)
{
    std::printf("\n%-8s  %-9s  %-4s  %-5s  %-11s  %s\n", "register", "lies in", "read", "write",
                "from 0", "from 1, with its kind");
    for (const RegisterPlace& place : learnPlaces(library)) {
        const int last = place.first + place.count - 1;
        std::printf("%-8s  %-9s  %-4d  %-5s  %-11s  %s\n", place.regName.c_str(),
                    place.coils ? "coils" : "registers", place.readFunction,
                    listed(place.writeFunctions).c_str(),
                    range(std::to_string(place.first), std::to_string(last)).c_str(),
                    range(prefixedNumber(place.coils, place.first, last),
                          prefixedNumber(place.coils, last, last))
                        .c_str());
    }
}

OutputJson placesJson(const Library& library)
{
    OutputJson places = OutputJson::array();
    for (const RegisterPlace& place : learnPlaces(library)) {
        const int last = place.first + place.count - 1;
        places.push_back({{"register", place.regName},
                          {"liesIn", place.coils ? "coils" : "registers"},
                          {"readFunction", place.readFunction},
                          {"writeFunctions", place.writeFunctions},
                          {"first", place.first},
                          {"last", last},
                          {"firstNumber", prefixedNumber(place.coils, place.first, last)},
                          {"lastNumber", prefixedNumber(place.coils, last, last)}});
    }
    return places;
}

void sayInfo(const Library& library)
{
    const std::vector<RegisterType> types = registerTypes(library);
    int protocolType = 0;
    library.intf_getProtocolType(&protocolType);
    OutputJson registers = OutputJson::array();
    for (const RegisterType& type : types)
        registers.push_back({{"register", type.name},
                             {"format", type.format},
                             {"lowest", type.lowest},
                             {"highest", type.highest},
                             {"bits", type.width == Width::bit ? 1 : 16 * unitsOf(type.width)},
                             {"access", type.access}});
    sayJson({{"library", library.path()},
             {"libraryVersion", library.intf_getVersion().toStdString()},
             {"protocol", protocolName(library, types.size())},
             {"protocolType", protocolType},
             {"defaultLine", defaultLine(library)},
             {"registers", registers},
             {"places", placesJson(library)}});
}

int runInfo(const InfoOptions& options)
{
    const Library library(options.library);
    if (options.json) {
        sayInfo(library);
        return exitDone;
    }
    const std::vector<RegisterType> types = registerTypes(library);
    int protocolType = 0;
    library.intf_getProtocolType(&protocolType);
    std::printf("library       %s\n", library.path().c_str());
    std::printf("version       %s\n", library.intf_getVersion().toStdString().c_str());
    std::printf("protocol      %s (type %d)\n", protocolName(library, types.size()).c_str(),
                protocolType);
    std::printf("default line  %s\n\n", defaultLine(library).c_str());
    std::printf("%-8s  %-8s  %-6s  %-7s  %-7s  %s\n", "register", "format", "lowest", "highest",
                "width", "access");
    for (const RegisterType& type : types)
        std::printf("%-8s  %-8s  %-6s  %-7s  %-7s  %s\n", type.name.c_str(), type.format.c_str(),
                    type.lowest.c_str(), type.highest.c_str(), widthText(type.width),
                    type.access.c_str());
    printPlaces(library);
    return exitDone;
}

} // namespace

void addInfoCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* command =
        app.add_subcommand("info", "What the library is and which registers it has");
    addJsonFlag(*command, chosen, options->json);
    addLibraryOption(*command, *options);
    command->footer("Examples:\n"
                    "  dov417 info\n"
                    "  dov417 info --library ./libdov417modbus.so");
    command->callback([options, &chosen]() { chosen = [options]() { return runInfo(*options); }; });
}

} // namespace dov417
