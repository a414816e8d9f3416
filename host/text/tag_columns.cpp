#include "text/tag_columns.h"

#include <charconv>
#include <cmath>

#include "line/failure.h"
#include "line/shown_text.h"
#include "text/address_values.h"

namespace dov417 {

const std::array<const char*, tagColumnCount> tagColumnNames = {
    "name",  "station", "register", "address",  "count", "format", "comment",
    "scale", "offset",  "unit",     "decimals", "min",   "max"};
const std::array<TagColumn, 3> neededTagColumns = {nameColumn, registerColumn, addressColumn};

namespace {

// No register type has more units.
const int maxValues = 65536;
const int maxDecimals = 9;

int countOf(const std::string& text)
{
    if (text.empty())
        return 1;
    int count = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || stop != end || count < 1 || count > maxValues)
        throw UsageFailure("'" + text + "' is no number of values: 1 to " +
                           std::to_string(maxValues));
    return count;
}

// Names and units are shown: a line end in one would begin a line that looks like another value's.
void requireShown(const std::string& text)
{
    if (!isShownAsItIs(text))
        throw UsageFailure("it cannot hold a line end or another control character");
}

std::optional<double> numberIn(const TagTexts& texts, TagColumn column)
{
    const std::string& text = texts.at(column);
    if (text.empty())
        return std::nullopt;
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        throw UsageFailure("'" + text + "' is no number");
    return number;
}

// What the tag's number means. `column` is where a mistake would be.
void readMeaning(Tag& tag, const TagTexts& texts, TagColumn& column)
{
    const bool isOfNumber = tag.address.width != Width::bit &&
                            isNumber(chosenFormat(tag.format, FormatChoice()).notation);
    const auto number = [&](TagColumn which) {
        column = which;
        const std::optional<double> value = numberIn(texts, which);
        if (value && !isOfNumber)
            throw UsageFailure(
                "only a number has one: no bit, no text, and no value in hex, binary or bool");
        return value;
    };
    if (const auto scale = number(scaleColumn)) {
        if (*scale == 0)
            throw UsageFailure("with a scale of 0 every value is the same");
        tag.scaling.scale = *scale;
    }
    tag.scaling.offset = number(offsetColumn).value_or(0);
    if (const auto decimals = number(decimalsColumn)) {
        if (*decimals != std::floor(*decimals) || *decimals < 0 || *decimals > maxDecimals)
            throw UsageFailure("decimals are 0 to " + std::to_string(maxDecimals));
        tag.scaling.decimals = static_cast<int>(*decimals);
    }
    tag.scaling.unit = texts[unitColumn];
    tag.limits.min = number(minColumn);
    tag.limits.max = number(maxColumn);
    if (tag.limits.min && tag.limits.max && *tag.limits.min > *tag.limits.max)
        throw UsageFailure("the maximum is below the minimum");
}

Tag parsedTag(const Library& library, const TagTexts& texts, TagColumn& column)
{
    Tag tag;
    tag.comment = texts[commentColumn];

    column = nameColumn;
    tag.name = texts[nameColumn];
    requireTagName(tag.name);

    column = unitColumn;
    requireShown(texts[unitColumn]);

    column = stationColumn;
    const std::string& station = texts[stationColumn];
    const int stationNo = station.empty() ? 1 : parseStation(station);

    column = formatColumn;
    tag.format = parseFormat(texts[formatColumn]);
    const int doubleWords = needsFourWords(tag.format) ? 2 : 1;

    column = countColumn;
    const int count = countOf(texts[countColumn]);

    column = registerColumn;
    const std::string& regName = texts[registerColumn];
    if (!registerType(library, regName))
        throw UsageFailure(checkSentence(library, checkUnknown, regName, std::string()));

    column = addressColumn;
    try {
        tag.address =
            parseAddress(library, stationNo, regName, texts[addressColumn], count * doubleWords);
    } catch (const AddressFailure& failure) {
        throw UsageFailure(failure.why);
    }

    column = formatColumn;
    if (doubleWords == 2 && tag.address.width == Width::doubleWord)
        tag.address.width = Width::quadWord;
    tag.address = asText(tag.address, tag.format);
    requireFormat(tag.address.width, chosenFormat(tag.format, FormatChoice()));
    readMeaning(tag, texts, column);
    return tag;
}

} // namespace

void requireTagName(const std::string& name)
{
    if (name.empty())
        throw UsageFailure("a tag needs a name");
    // A command line could not tell such a name from an address or a value, and who reads it would
    // take it for the address that it spells.
    const std::size_t bad = name.find_first_of("=:,");
    if (bad != std::string::npos)
        throw UsageFailure(std::string("a name cannot hold '") + name[bad] + "'");
    requireShown(name);
}

Tag tagOf(const Library& library, const TagTexts& texts, TagColumn& column)
{
    try {
        return parsedTag(library, texts, column);
    } catch (const AddressFailure& failure) {
        throw UsageFailure(failure.why);
    }
}

} // namespace dov417
