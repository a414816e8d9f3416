#include "session/recipe_file.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "line/replace_file.h"
#include "session/recipe_wishes.h"
#include "text/address_values.h"
#include "text/json_value.h"
#include "text/placed_json.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_boolean())
        return value.get<bool>() ? "1" : "0";
    if (value.is_number())
        return value.dump();
    throw UsageFailure("a value is a number or a text");
}

std::vector<Json> listOf(const Json& values)
{
    if (!values.is_array())
        return {values};
    return {values.begin(), values.end()};
}

std::string standardInput()
{
    return {std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
}

// A name that is there twice is refused: which of its values goes out would be a guess.
Json parseFile(const std::string& file)
{
    const PlacedJson json(file == "-" ? standardInput() : contentOf(file, file), file);
    if (!json.root().is_object())
        throw UsageFailure(file + ": a recipe is an object of tag names and values");
    return json.root();
}

// A number in hex is the bits as they are, whatever the tag's format: what a controller holds may
// be no BCD number, or a float that is none.
Format formatOf(const std::string& text, Format format)
{
    if (format.notation != Notation::text && text.compare(0, 2, "0x") == 0)
        return {Notation::hex, format.order};
    return format;
}

// A number of JSON has decimal digits, whatever digits its tag is shown in; a text is read as it is
// typed elsewhere.
Format formatOf(const Json& value, const std::string& text, const Format& format)
{
    const bool hasOtherDigits =
        format.notation == Notation::hex || format.notation == Notation::binary;
    if (!value.is_string() && hasOtherDigits)
        return {Notation::unsignedNumber, format.order};
    return formatOf(text, format);
}

// One value so that it reads back as the same bytes.
std::string exactText(const Address& value, const Format& format, const unsigned char* bytes)
{
    std::string text = valueTexts(value, format, bytes).front();
    try {
        const auto again = valueBytes(value, formatOf(text, format), {text});
        if (std::equal(again.begin(), again.end(), bytes))
            return text;
    } catch (const UsageFailure&) {
        // not to be read back at all
    }
    return valueTexts(value, formatOf("0x", format), bytes).front();
}

RecipeEntry entryOf(const Item& item, const Json& values)
{
    const std::vector<Json> list = listOf(values);
    std::vector<std::string> texts;
    texts.reserve(list.size());
    for (const Json& value : list)
        texts.push_back(textOf(value));
    requireCount(valueCount(item.address), texts);
    RecipeEntry entry{item, {}};
    if (item.address.width == Width::text && !values.is_string())
        throw UsageFailure("a text is written in quotes");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string& text = texts[i];
        const Format format = formatOf(list[i], text, item.format);
        const auto bytes = valueBytes(valueOf(item.address, 0), format, {text});
        entry.data.insert(entry.data.end(), bytes.begin(), bytes.end());
    }
    requireWithinLimits(item, entry.data);
    return entry;
}

} // namespace

std::vector<RecipeEntry> readRecipe(const std::string& file, const Items& items)
{
    return readRecipe(file,
                      [&items](const std::string& name) { return items.find(name, Access::read); });
}

std::vector<RecipeEntry> readRecipe(const std::string& file, const FindItem& find)
{
    std::vector<RecipeEntry> entries;
    const std::string inFile = file + ": ";
    const Json recipe = parseFile(file);
    for (const auto& [name, values] : recipe.items()) {
        try {
            entries.push_back(entryOf(find(name), values));
        } catch (const UsageFailure& failure) {
            throw UsageFailure(inFile + name + ": " + failure.what());
        }
    }
    try {
        requireOneWish(entries);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(inFile + failure.what());
    }
    return entries;
}

void writeRecipe(const std::string& file, const std::vector<RecipeEntry>& entries)
{
    Json recipe = Json::object();
    for (const RecipeEntry& entry : entries) {
        Json values = Json::array();
        const Address value = valueOf(entry.item.address, 0);
        for (std::size_t at = 0; at < entry.data.size();
             at += static_cast<std::size_t>(byteCount(value)))
            values.push_back(
                jsonValue(exactText(value, entry.item.format, entry.data.data() + at)));
        recipe[entry.item.name] = values.size() == 1 ? values.front() : values;
    }
    const std::string text = recipe.dump(2) + "\n";
    if (file == "-") {
        std::fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    QString why;
    if (!replaceFile(QString::fromStdString(file), QByteArray::fromStdString(text), &why))
        throw Failure("cannot write " + why.toStdString());
}

} // namespace dov417
