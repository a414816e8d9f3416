#include "text/json_tags.h"

#include <map>

#include "line/failure.h"
#include "text/tag_names.h"

namespace dov417 {

namespace {

enum class Kind {
    text,
    whole,
    real,
    address, // a text, or a whole number
};

Kind kindOf(TagColumn column)
{
    switch (column) {
    case addressColumn:
        return Kind::address;
    case stationColumn:
    case countColumn:
    case decimalsColumn:
        return Kind::whole;
    case scaleColumn:
    case offsetColumn:
    case minColumn:
    case maxColumn:
        return Kind::real;
    default:
        return Kind::text;
    }
}

// Why a value is none for a column; empty where it is one.
std::string complaintAbout(const OrderedJson& value, TagColumn column)
{
    switch (kindOf(column)) {
    case Kind::text:
        return value.is_string() ? "" : "a text is needed";
    case Kind::whole:
        return value.is_number_integer() ? "" : "a whole number is needed";
    case Kind::real:
        return value.is_number() ? "" : "a number is needed";
    case Kind::address:
        if (value.is_string() || value.is_number_integer())
            return "";
        // 1.10 and 1.1 are the same number.
        return "an address is a whole number or a text, as that of a bit: \"1.10\"";
    }
    return "";
}

std::string columnList()
{
    std::string list;
    for (const char* const name : tagColumnNames)
        list.append(list.empty() ? "" : ", ").append(name);
    return list;
}

JsonTag jsonTag(const PlacedJson& file, const std::string& path, const OrderedJson& object)
{
    if (!object.is_object())
        file.refuse(path, "a tag is an object");
    JsonTag tag;
    tag.path = path;
    for (const auto& [name, value] : object.items()) {
        int at = 0;
        while (at < tagColumnCount && name != tagColumnNames.at(static_cast<std::size_t>(at)))
            ++at;
        if (at == tagColumnCount) {
            if (!isNewer(file))
                file.refuse(memberPath(path, name),
                            "no member of a tag, which are " + columnList());
            tag.others[name] = value;
            continue;
        }
        const auto column = static_cast<TagColumn>(at);
        const std::string why = complaintAbout(value, column);
        if (!why.empty())
            file.refuse(memberPath(path, name), why);
        tag.texts.at(column) = value.is_string() ? value.get<std::string>() : value.dump();
    }
    for (const TagColumn needed : neededTagColumns)
        if (!object.contains(tagColumnNames.at(needed)))
            file.refuse(path, std::string("a tag needs its ") + tagColumnNames.at(needed));
    return tag;
}

OrderedJson toJson(TagColumn column, const std::string& text)
{
    const Kind kind = kindOf(column);
    if (kind == Kind::text || kind == Kind::address)
        return text;
    OrderedJson number = OrderedJson::parse(text, nullptr, false);
    const std::string why = complaintAbout(number, column);
    if (!why.empty())
        throw UsageFailure("'" + text + "': " + why);
    return number;
}

[[noreturn]] void refuse(const JsonTag& tag, TagColumn column, const std::string& why,
                         const PlacedJson* file)
{
    const char* const name = tagColumnNames.at(column);
    if (!file || tag.path.empty())
        throw UsageFailure("tag '" + tag.texts[nameColumn] + "': " + name + ": " + why);
    const std::string path = memberPath(tag.path, name);
    file->refuse(file->line(path) > 0 ? path : tag.path, why);
}

} // namespace

bool isNewer(const PlacedJson& file)
{
    const auto version = file.root().find(versionMember);
    return version != file.root().end() && version->is_number_integer() &&
           version->get<double>() > projectVersion;
}

std::string newerSentence(const PlacedJson& file)
{
    return file.file() + " is a newer program's, of version " +
           file.root().at(versionMember).dump() + ": what is not known to version " +
           std::to_string(projectVersion) + " counts for nothing";
}

std::vector<JsonTag> jsonTags(const PlacedJson& file)
{
    std::vector<JsonTag> tags;
    const auto list = file.root().find(tagsMember);
    if (list == file.root().end())
        return tags;
    if (!list->is_array())
        file.refuse(tagsMember, "a list of tags is needed");
    for (std::size_t i = 0; i < list->size(); ++i)
        tags.push_back(jsonTag(file, elementPath(tagsMember, i), list->at(i)));
    return tags;
}

OrderedJson toJson(const JsonTag& tag)
{
    OrderedJson object = OrderedJson::object();
    for (std::size_t i = 0; i < tag.texts.size(); ++i)
        if (!tag.texts.at(i).empty())
            object[tagColumnNames.at(i)] = toJson(static_cast<TagColumn>(i), tag.texts.at(i));
    object.update(tag.others);
    return object;
}

std::vector<Tag> tagsOf(const Library& library, const std::vector<JsonTag>& tags,
                        const PlacedJson* file)
{
    std::vector<Tag> made;
    std::map<std::string, std::size_t> numberOfName;
    for (const JsonTag& each : tags) {
        TagColumn column = nameColumn;
        try {
            made.push_back(tagOf(library, each.texts, column));
        } catch (const UsageFailure& failure) {
            refuse(each, column, failure.what(), file);
        }
        const auto [known, isNew] = numberOfName.emplace(made.back().name, made.size() - 1);
        if (!isNew)
            refuse(each, nameColumn,
                   "'" + made.back().name + "' is already " +
                       elementPath(tagsMember, known->second),
                   file);
        // A tag of no file would be an address that was typed.
        made.back().line = file && !each.path.empty() ? file->line(each.path) : 1;
    }
    if (const auto clash = clashOf(made))
        refuse(tags[clash->tag], nameColumn, clash->why, file);
    return made;
}

} // namespace dov417
