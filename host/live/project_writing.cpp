#include <algorithm>

#include "line/failure.h"
#include "line/replace_file.h"
#include "live/line_members.h"
#include "live/project.h"

namespace dov417 {

namespace {

struct FieldWriter {
    const LineSetup& setup;

    OrderedJson operator()(bool LineSetup::*) const
    {
        return true;
    }
    OrderedJson operator()(std::optional<int> LineSetup::*field) const
    {
        return (setup.*field).value_or(0);
    }
    template <typename Field>
    OrderedJson operator()(Field field) const
    {
        return setup.*field;
    }
};

OrderedJson lineJson(const Project& project)
{
    OrderedJson line = OrderedJson::object();
    for (const LineMember& member : lineMembers())
        if (!isDefault(member, project.line))
            line[member.name] = std::visit(FieldWriter{project.line}, member.field);
    line.update(project.othersOfLine);
    return line;
}

OrderedJson stationJson(const ProjectStation& station)
{
    OrderedJson object = {{"number", station.number}};
    if (!station.name.empty())
        object["name"] = station.name;
    if (station.maxRegisters)
        object["max-registers"] = *station.maxRegisters;
    object.update(station.others);
    return object;
}

} // namespace

std::string toText(const Project& project)
{
    OrderedJson root = {{versionMember, std::max(project.version, projectVersion)}};
    const OrderedJson line = lineJson(project);
    if (!line.empty())
        root["line"] = line;
    for (const ProjectStation& station : project.stations)
        root["stations"].push_back(stationJson(station));
    for (const JsonTag& tag : project.tags)
        root[tagsMember].push_back(toJson(tag));
    if (!project.tagFile.empty())
        root["tagFile"] = project.tagFile;
    root.update(project.others);
    try {
        std::string text = root.dump(2) + "\n";
        parseProject(text, "the project");
        return text;
    } catch (const OrderedJson::exception& error) { // a text that is no UTF-8
        throw Failure(std::string("the project cannot be written: ") + error.what());
    }
}

void writeProject(const std::string& file, const Project& project)
{
    QString why;
    if (!replaceFile(QString::fromStdString(file), QByteArray::fromStdString(toText(project)),
                     &why))
        throw Failure("cannot write " + why.toStdString());
}

} // namespace dov417
