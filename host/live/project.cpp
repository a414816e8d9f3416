#include "live/project.h"

#include <filesystem>
#include <set>

#include "line/failure.h"
#include "line/frame_bytes.h"
#include "link/network_address.h"
#include "live/line_members.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

// One object of the file. Each of its members is taken once; those that are left are somebody
// else's.
class Members {
public:
    Members(const PlacedJson& file, const OrderedJson& object, const std::string& path)
        : file_(file), path_(path), rest_(object)
    {
        if (!object.is_object())
            file.refuse(path, path.empty() ? "a project is an object" : "an object is needed");
    }

    [[noreturn]] void refuse(const std::string& name, const std::string& why) const
    {
        file_.refuse(memberPath(path_, name), why);
    }
    bool has(const std::string& name) const
    {
        return rest_.contains(name);
    }

    std::optional<OrderedJson> take(const std::string& name)
    {
        if (!has(name))
            return std::nullopt;
        OrderedJson value = rest_.at(name);
        rest_.erase(name);
        return value;
    }
    std::string text(const std::string& name)
    {
        const std::optional<OrderedJson> value = take(name);
        if (value && !value->is_string())
            refuse(name, "a text is needed");
        return value ? value->get<std::string>() : std::string();
    }
    std::optional<double> number(const std::string& name, double min, double max)
    {
        const std::optional<OrderedJson> value = take(name);
        if (!value)
            return std::nullopt;
        const bool isInRange =
            value->is_number() && value->get<double>() >= min && value->get<double>() <= max;
        if (!isInRange)
            refuse(name, "a number from " + OrderedJson(min).dump() + " to " +
                             OrderedJson(max).dump() + " is needed");
        return value->get<double>();
    }
    std::optional<int> whole(const std::string& name, int min, int max)
    {
        const std::optional<OrderedJson> value = take(name);
        if (!value)
            return std::nullopt;
        const bool isInRange = value->is_number_integer() && value->get<double>() >= min &&
                               value->get<double>() <= max;
        if (!isInRange)
            refuse(name, "a whole number from " + std::to_string(min) + " to " +
                             std::to_string(max) + " is needed");
        return value->get<int>();
    }

    // What is left.
    const OrderedJson& rest() const
    {
        return rest_;
    }
    // The same of an object in which, of a version that is known, an unknown member is a mistake.
    const OrderedJson& others(const std::string& known) const
    {
        if (!isNewer(file_) && !rest_.empty())
            refuse(rest_.begin().key(), "there is no such member; there are " + known);
        return rest_;
    }

private:
    const PlacedJson& file_;
    std::string path_;
    OrderedJson rest_;
};

struct FieldReader {
    Members& members;
    const LineMember& member;
    LineSetup& setup;

    void operator()(std::string LineSetup::*field) const
    {
        setup.*field = members.text(member.name);
    }
    void operator()(bool LineSetup::*field) const
    {
        const std::optional<OrderedJson> value = members.take(member.name);
        if (value && !value->is_boolean())
            members.refuse(member.name, "true or false is needed");
        if (value && value->get<bool>())
            setup.*field = !(setup.*field);
    }
    void operator()(int LineSetup::*field) const
    {
        if (const std::optional<int> value = whole())
            setup.*field = *value;
    }
    void operator()(std::optional<int> LineSetup::*field) const
    {
        setup.*field = whole();
    }
    void operator()(double LineSetup::*field) const
    {
        if (const auto value = members.number(member.name, member.min, member.max))
            setup.*field = *value;
    }

private:
    std::optional<int> whole() const
    {
        return members.whole(member.name, static_cast<int>(member.min),
                             static_cast<int>(member.max));
    }
};

std::string memberList()
{
    std::string list;
    for (const LineMember& member : lineMembers())
        list.append(list.empty() ? "" : ", ").append(member.name);
    return list;
}

// What a text has to be besides.
template <typename Parse>
void requireForm(const Members& members, const char* name, const std::string& text, Parse parse)
{
    try {
        if (!text.empty())
            parse(text);
    } catch (const UsageFailure& failure) {
        members.refuse(name, failure.what());
    }
}

void readLine(Project& project, Members members)
{
    LineSetup& line = project.line;
    const bool hasTimeout = members.has("timeout");
    for (const char* const other : {"timeout-min", "timeout-max"})
        if (hasTimeout && members.has(other))
            members.refuse(other, "excludes timeout");
    const bool hasMax = members.has("timeout-max");
    for (const LineMember& member : lineMembers())
        std::visit(FieldReader{members, member, line}, member.field);
    requireForm(members, "port", line.port, parseNetworkAddress);
    requireForm(members, "line", line.line, parseRtuFormat);
    if (line.timeoutMinMs && *line.timeoutMinMs > line.timeoutMaxMs)
        members.refuse(hasMax ? "timeout-max" : "timeout-min",
                       "timeout-max is less than timeout-min");
    project.othersOfLine = members.others(memberList());
}

void readStations(Project& project, const PlacedJson& file, const OrderedJson& list)
{
    if (!list.is_array())
        file.refuse("stations", "a list of stations is needed");
    std::set<int> numbers;
    const LineMember& maximum = lineMember("max-registers");
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string path = elementPath("stations", i);
        Members members(file, list[i], path);
        ProjectStation station;
        const std::optional<int> number = members.whole("number", 1, maxStation);
        if (!number)
            file.refuse(path, "a station needs its number");
        station.number = *number;
        if (!numbers.insert(station.number).second)
            members.refuse("number", std::to_string(station.number) + " is already a station's");
        station.name = members.text("name");
        station.maxRegisters = members.whole("max-registers", static_cast<int>(maximum.min),
                                             static_cast<int>(maximum.max));
        station.others = members.others("number, name, max-registers");
        project.stations.push_back(station);
    }
}

} // namespace

Project parseProject(const std::string& text, const std::string& file)
{
    const auto source = std::make_shared<const PlacedJson>(text, file);
    Project project;
    project.source = source;
    Members root(*source, source->root(), std::string());
    const std::optional<int> version = root.whole(versionMember, 1, 1000000);
    if (!version)
        source->refuse(std::string(), "no project: its version is missing");
    project.version = *version;
    if (const auto line = root.take("line"))
        readLine(project, Members(*source, *line, "line"));
    if (const auto stations = root.take("stations"))
        readStations(project, *source, *stations);
    project.tags = jsonTags(*source);
    const bool hasTags = root.take(tagsMember).has_value();
    if (hasTags && root.has("tagFile"))
        root.refuse("tagFile", "excludes tags");
    project.tagFile = root.text("tagFile");
    project.others = root.rest();
    return project;
}

Project readProject(const std::string& file)
{
    return parseProject(contentOf(file, "the project " + file), file);
}

std::string tagFileOf(const Project& project, const std::string& projectFile)
{
    return std::filesystem::path(projectFile).replace_filename(project.tagFile).string();
}

std::vector<Tag> tagsOf(const Library& library, const Project& project,
                        const std::string& projectFile, const Remark& remark)
{
    return project.tagFile.empty() ? tagsOf(library, project.tags, project.source.get())
                                   : readTags(library, tagFileOf(project, projectFile), remark);
}

} // namespace dov417
