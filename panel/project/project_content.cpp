#include "panel/project/project_content.h"

#include <QCoreApplication>
#include <algorithm>
#include <filesystem>
#include <tuple>

#include "line/failure.h"
#include "live/line_members.h"

namespace dov417 {

namespace {

OrderedJson panelOf(const Project& project)
{
    const auto panel = project.others.find(panelMember);
    if (panel == project.others.end())
        return OrderedJson::object();
    if (!panel->is_object())
        project.source->refuse(panelMember, "an object is needed");
    for (const auto& [name, settings] : panel->items())
        if (!settings.is_object() && !isNewer(*project.source))
            project.source->refuse(memberPath(panelMember, name), "an object is needed");
    return *panel;
}

// The tag file lies where it lay.
std::string tagFileFrom(const ProjectOrigin& origin, const std::string& file)
{
    const std::filesystem::path tags(origin.project.tagFile);
    if (tags.is_absolute() || origin.file.empty())
        return tags.string();
    const std::filesystem::path there =
        std::filesystem::absolute(tagFileOf(origin.project, origin.file)).lexically_normal();
    const auto folder = std::filesystem::absolute(file).lexically_normal().parent_path();
    return there.lexically_relative(folder).string();
}

// Where a newer version has put what is not known here, it stays.
void put(OrderedJson& panel, const std::string& name, const OrderedJson& settings)
{
    OrderedJson merged = settings;
    const auto before = panel.find(name);
    if (before != panel.end() && before->is_object())
        for (const auto& [member, value] : before->items())
            if (!merged.contains(member))
                merged[member] = value;
    if (merged.empty())
        panel.erase(name);
    else
        panel[name] = merged;
}

} // namespace

ReadContent readContent(const Library& library, const std::string& text, const std::string& file)
{
    ReadContent read;
    ProjectOrigin& origin = read.origin;
    origin.file = file;
    origin.text = text;
    origin.project = parseProject(text, file);
    const Project& project = origin.project;
    origin.panel = panelOf(project);
    const OrderedJson formats = origin.panel.value(formatsMember, OrderedJson::object());
    origin.panel.erase(formatsMember);
    ItemsOfTags items;
    try {
        const auto remark = [&read](const std::string& sentence) {
            read.remarks.append(QString::fromStdString(sentence));
        };
        items = itemsOfTags(library, tagsOf(library, project, file, remark), formats);
    } catch (const ShownFormatFailure& failure) {
        refuseSettings(origin, formatsMember, failure.tag + ": " + failure.what());
    }
    origin.tags = {project.tags, items.own, !project.tagFile.empty()};
    read.content.items = std::make_shared<const std::vector<Item>>(items.shown);
    read.content.line = project.line;
    read.content.stations = project.stations;
    read.content.line.stationMaxRegisters = maxRegistersOf(project.stations);
    for (const auto& [name, settings] : origin.panel.items())
        read.content.pages[name] = settings;
    return read;
}

void refuseSettings(const ProjectOrigin& origin, const std::string& name,
                    const std::string& message)
{
    const PlacedJson& source = *origin.project.source;
    const std::string member = memberPath(panelMember, name);
    // A name may hold a colon, but a member's path has no space behind one.
    const std::size_t end = message.find(": ");
    const std::string path = memberPath(member, message.substr(0, end));
    if (end != std::string::npos && source.line(path) > 0)
        source.refuse(path, message.substr(end + 2));
    source.refuse(member, message);
}

std::string projectText(const Library& library, const ProjectOrigin& origin,
                        const ProjectContent& content, const OrderedJson& layout,
                        const std::string& file)
{
    Project project = origin.project;
    project.line = content.line;
    project.stations = content.stations;
    const TagsToWrite tags = tagsOfItems(library, *content.items, origin.tags);
    project.tags = tags.tags;
    project.tagFile = tags.areInTagFile ? tagFileFrom(origin, file) : std::string();
    OrderedJson panel = origin.panel;
    for (const auto& [name, settings] : content.pages)
        put(panel, name, settings);
    for (const auto& [name, settings] : layout.items())
        put(panel, name, settings);
    put(panel, formatsMember, tags.formats);
    project.others.erase(panelMember);
    if (!panel.empty())
        project.others[panelMember] = panel;
    std::string text = toText(project);
    try {
        readContent(library, text, file);
    } catch (const UsageFailure& failure) {
        throw Failure(
            QCoreApplication::translate("ProjectContent", "it could not be opened again: %1")
                .arg(QString::fromUtf8(failure.what()))
                .toStdString());
    }
    return text;
}

OrderedJson settingsIn(const ProjectContent& content, const std::string& name)
{
    const auto settings = content.pages.find(name);
    // A newer program's may be of another kind.
    return settings == content.pages.end() || !settings->second.is_object() ? OrderedJson::object()
                                                                            : settings->second;
}

std::map<int, int> maxRegistersOf(const std::vector<ProjectStation>& stations)
{
    std::map<int, int> numbers;
    for (const ProjectStation& station : stations)
        if (station.maxRegisters)
            numbers[station.number] = *station.maxRegisters;
    return numbers;
}

StationNames stationNames(const std::vector<ProjectStation>& stations)
{
    StationNames names;
    for (const ProjectStation& station : stations)
        if (!station.name.empty())
            names[station.number] = station.name;
    return names;
}

bool areSame(const std::vector<ProjectStation>& a, const std::vector<ProjectStation>& b)
{
    const auto parts = [](const ProjectStation& station) {
        return std::tie(station.number, station.name, station.maxRegisters, station.others);
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&parts](const ProjectStation& x, const ProjectStation& y) {
                          return parts(x) == parts(y);
                      });
}

bool isSameLine(const LineSetup& a, const LineSetup& b)
{
    for (const LineMember& member : lineMembers())
        if (memberText(member, a) != memberText(member, b) ||
            isDefault(member, a) != isDefault(member, b))
            return false;
    return a.stationMaxRegisters == b.stationMaxRegisters;
}

} // namespace dov417
