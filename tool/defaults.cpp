#include "tool/defaults.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "line/failure.h"
#include "line/shown_text.h"
#include "link/network_address.h"
#include "live/line_members.h"
#include "live/project.h"
#include "tool/own_files.h"

namespace dov417 {

namespace {

struct Variable {
    const char* name;
    const char* option;
};
const Variable variables[] = {
    {"DOV417_PORT", "port"}, {"DOV417_LINE", "line"}, {"DOV417_TAGS", "tags"}};

// An option given on the command line, and one from elsewhere that it excludes.
struct Rival {
    const char* given;
    const char* other;
};
const Rival rivals[] = {{"port", "simulated"},      {"simulated", "port"},
                        {"timeout", "timeout-min"}, {"timeout", "timeout-max"},
                        {"timeout-min", "timeout"}, {"timeout-max", "timeout"}};

class Filler {
public:
    Filler(const CLI::App& command, const DefaultTargets& targets, std::vector<Origin>& origins)
        : command_(command), targets_(targets), origins_(origins)
    {
    }

    void fillFromEnvironment()
    {
        for (const Variable& variable : variables) {
            const char* const text = std::getenv(variable.name);
            if (!text || *text == '\0' || !isOpen(variable.option))
                continue;
            try {
                set(variable.option, text);
            } catch (const UsageFailure& failure) {
                throw UsageFailure(std::string(variable.name) + ": " + failure.what());
            }
            remember(variable.option, text, variable.name);
        }
    }

    void fillFrom(const std::string& file)
    {
        Project project = readProject(file);
        if (isNewer(*project.source))
            remarkOnce(newerSentence(*project.source));
        if (targets_.line)
            fillLine(project, file);
        if (!targets_.tags || !isOpen("tags"))
            return;
        if (!project.tagFile.empty())
            *targets_.tags = tagFileOf(project, file);
        else if (!project.tags.empty())
            *targets_.tags = file;
        else
            return;
        remember("tags", *targets_.tags, file);
    }

private:
    bool isGiven(const std::string& name) const
    {
        const CLI::Option* const option = command_.get_option_no_throw("--" + name);
        return (option && option->count() > 0) ||
               std::any_of(origins_.begin(), origins_.end(),
                           [&name](const Origin& origin) { return origin.option == name; });
    }
    // The command has it, and nobody of a higher rank has set it or what it excludes.
    bool isOpen(const std::string& name) const
    {
        const bool isExcluded =
            std::any_of(std::begin(rivals), std::end(rivals), [&](const Rival& rival) {
                return name == rival.other && isGiven(rival.given);
            });
        const bool isWanted = !targets_.isPortAlone || name == "port" || name == "simulated";
        return isWanted && command_.get_option_no_throw("--" + name) && !isGiven(name) &&
               !isExcluded;
    }

    void set(const std::string& name, const std::string& text)
    {
        if (name == "tags") {
            *targets_.tags = text;
        } else if (name == "port") {
            parseNetworkAddress(text);
            targets_.line->port = text;
        } else {
            parseRtuFormat(text);
            targets_.line->line = text;
        }
    }

    void fillLine(Project& project, const std::string& file)
    {
        if (project.line.simulated)
            project.line.port.clear();
        // Of options that exclude each other, the highest level that names one decides.
        std::vector<const LineMember*> taken;
        for (const LineMember& member : lineMembers())
            if (!isDefault(member, project.line) && isOpen(member.name))
                taken.push_back(&member);
        const bool isEveryMaximum = isGiven("max-registers");
        for (const LineMember* const member : taken) {
            copyMember(*member, project.line, *targets_.line);
            remember(member->name, memberText(*member, project.line), file);
        }
        for (const ProjectStation& station : project.stations) {
            targets_.line->stationNames[station.number] = shownText(station.name);
            if (station.maxRegisters && !isEveryMaximum)
                targets_.line->stationMaxRegisters[station.number] = *station.maxRegisters;
        }
    }

    void remember(const std::string& option, const std::string& text, const std::string& from)
    {
        origins_.push_back({option, text, from});
    }

    const CLI::App& command_;
    DefaultTargets targets_;
    std::vector<Origin>& origins_;
};

} // namespace

void addDefaults(CLI::App& command, const DefaultTargets& targets, Action& chosen)
{
    const auto file = std::make_shared<std::string>();
    command
        .add_option("--project", *file,
                    "Project file, for what is given neither here nor in the environment: " +
                        std::string(targets.line ? "its line" : "") +
                        (targets.line && targets.tags ? " and " : "") +
                        (targets.tags ? "its tags" : ""))
        ->option_text("FILE")
        ->group(targets.line ? "Line" : "Values");
    command.parse_complete_callback([file, targets, &command, &chosen]() {
        Filler filler(command, targets, chosen.origins);
        filler.fillFromEnvironment();
        if (!file->empty())
            filler.fillFrom(*file);
        requireOwnFiles(command, targets.tags ? *targets.tags : std::string(), *file);
    });
}

std::string withOrigins(const std::string& message, const std::vector<Origin>& origins)
{
    std::string text = message;
    for (const Origin& origin : origins) {
        if (origin.text == origin.from) // the project is its own tag file
            continue;
        const std::string option = "--" + origin.option;
        // A number alone may be any other's.
        const bool isNamed = origin.text.find_first_not_of("0123456789.") != std::string::npos &&
                             message.find(origin.text) != std::string::npos;
        if (isNamed || message.find(option) != std::string::npos)
            text.append("; ")
                .append(option)
                .append(" ")
                .append(origin.text)
                .append(" comes from " + origin.from);
    }
    return text;
}

} // namespace dov417
