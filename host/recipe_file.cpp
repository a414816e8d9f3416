#include "recipe_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "json_value.h"

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& value, const std::string& where)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_boolean())
        return value.get<bool>() ? "1" : "0";
    if (value.is_number())
        return value.dump();
    throw UsageFailure(where + ": a value is a number or a text");
}

std::vector<std::string> textsOf(const Json& values, const std::string& where)
{
    if (!values.is_array())
        return {textOf(values, where)};
    std::vector<std::string> texts;
    for (const Json& value : values)
        texts.push_back(textOf(value, where));
    return texts;
}

Json parseFile(const std::string& file)
{
    std::ifstream in(file);
    if (!in)
        throw UsageFailure("cannot read " + file + ": " + std::strerror(errno));
    Json json;
    try {
        json = Json::parse(in);
    } catch (const Json::parse_error& error) {
        throw UsageFailure(file + ": " + error.what());
    }
    if (!json.is_object())
        throw UsageFailure(file + ": a recipe is an object of tag names and values");
    return json;
}

} // namespace

std::vector<RecipeEntry> readRecipe(const std::string& file, const Items& items)
{
    std::vector<RecipeEntry> entries;
    const Json json = parseFile(file);
    for (const auto& [name, values] : json.items()) {
        RecipeEntry entry;
        try {
            entry.item = items.find(name, Access::read);
            const std::vector<std::string> texts = textsOf(values, name);
            const std::size_t wanted = static_cast<std::size_t>(valueCount(entry.item.address));
            if (texts.size() != wanted)
                throw UsageFailure(name + ": " + std::to_string(wanted) + " values are needed, " +
                                   std::to_string(texts.size()) + " are given");
            entry.data = valueBytes(entry.item.address.width, entry.item.format, texts);
        } catch (const UsageFailure& failure) {
            throw UsageFailure(file + ": " + failure.what());
        }
        entries.push_back(entry);
    }
    return entries;
}

void writeRecipe(const std::string& file, const std::vector<RecipeEntry>& entries)
{
    Json json = Json::object();
    for (const RecipeEntry& entry : entries) {
        const std::vector<std::string> texts =
            valueTexts(entry.item.address.width, entry.item.format, entry.data.data(),
                       valueCount(entry.item.address));
        Json values = Json::array();
        for (const std::string& text : texts)
            values.push_back(jsonValue(text));
        json[entry.item.name] = values.size() == 1 ? values.front() : values;
    }
    // First aside, then in place: an interruption leaves the old recipe or the new one.
    const std::string aside = file + ".new";
    std::ofstream out(aside);
    out << json.dump(2) << '\n';
    out.close();
    if (!out || std::rename(aside.c_str(), file.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        std::remove(aside.c_str());
        throw Failure("cannot write " + file + ": " + why);
    }
}
