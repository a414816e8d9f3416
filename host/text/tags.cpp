#include "text/tags.h"

#include <array>
#include <charconv>
#include <cmath>
#include <map>

#include "text/address_values.h"
#include "text/csv_rows.h"
#include "text/text_file.h"
#include "text/wildcards.h"

namespace dov417 {

namespace {

enum Column {
    nameColumn,
    stationColumn,
    registerColumn,
    addressColumn,
    countColumn,
    formatColumn,
    commentColumn,
    scaleColumn,
    offsetColumn,
    unitColumn,
    decimalsColumn,
    minColumn,
    maxColumn,
    columnCount
};
const std::array<const char*, columnCount> columnNames = {
    "name",  "station", "register", "address",  "count", "format", "comment",
    "scale", "offset",  "unit",     "decimals", "min",   "max"};
const std::array<Column, 3> neededColumns = {nameColumn, registerColumn, addressColumn};

// No register type has more units.
const int maxValues = 65536;
const int maxDecimals = 9;

std::string inLowerCase(std::string text)
{
    for (char& letter : text)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return text;
}

// Which field of a row holds which column; -1: the file has no such column.
class Header {
public:
    Header(const Row& row, const Place& place, bool mayHaveCommas)
        : names_(row.fields), mayHaveCommas_(mayHaveCommas)
    {
        places_.fill(-1);
        for (std::size_t i = 0; i < row.fields.size(); ++i) {
            int column = 0;
            while (column < columnCount &&
                   inLowerCase(row.fields[i]) != columnNames[std::size_t(column)])
                ++column;
            if (column == columnCount)
                continue; // somebody else's
            if (places_[std::size_t(column)] >= 0)
                place.refuse(i + 1, row.fields[i], "the column is there twice");
            places_[std::size_t(column)] = static_cast<int>(i);
        }
        for (const Column needed : neededColumns)
            if (places_[needed] < 0)
                place.refuse(std::string("the header lacks the column ") + columnNames[needed]);
    }

    std::string text(const Row& row, Column column) const
    {
        const int at = places_[column];
        return at >= 0 && std::size_t(at) < row.fields.size() ? row.fields[std::size_t(at)]
                                                              : std::string();
    }
    std::string name(std::size_t field) const
    {
        return field < names_.size() ? names_[field] : std::string();
    }
    // May a number have a comma for its point? Not where a comma ends a field.
    bool mayHaveCommas() const
    {
        return mayHaveCommas_;
    }
    std::size_t width() const
    {
        return names_.size();
    }
    [[noreturn]] void refuse(const Place& place, Column column, const std::string& why) const
    {
        if (places_[column] < 0)
            place.refuse(why);
        place.refuse(std::size_t(places_[column]) + 1, columnNames[column], why);
    }

private:
    std::vector<std::string> names_;
    std::array<int, columnCount> places_;
    bool mayHaveCommas_;
};

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

void requireName(const std::string& name)
{
    if (name.empty())
        throw UsageFailure("a tag needs a name");
    // A command line could not tell such a name from an address or a value.
    const std::size_t bad = name.find_first_of("=:,");
    if (bad != std::string::npos)
        throw UsageFailure(std::string("a name cannot hold '") + name[bad] + "'");
}

std::optional<double> numberIn(const Header& header, const Row& row, Column column)
{
    std::string text = header.text(row, column);
    if (text.empty())
        return std::nullopt;
    const std::size_t comma = text.find(',');
    if (header.mayHaveCommas() && comma != std::string::npos)
        text[comma] = '.';
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        throw UsageFailure("'" + header.text(row, column) + "' is no number");
    return number;
}

// What the tag's number means. `column` is where a mistake would be.
void readMeaning(Tag& tag, const Header& header, const Row& row, Column& column)
{
    const bool isOfNumber = tag.address.width != Width::bit &&
                            isNumber(chosenFormat(tag.format, FormatChoice()).notation);
    const auto number = [&](Column which) {
        column = which;
        const std::optional<double> value = numberIn(header, row, which);
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
    tag.scaling.unit = header.text(row, unitColumn);
    tag.limits.min = number(minColumn);
    tag.limits.max = number(maxColumn);
    if (tag.limits.min && tag.limits.max && *tag.limits.min > *tag.limits.max)
        throw UsageFailure("the maximum is below the minimum");
}

Tag tagOf(const Library& library, const Header& header, const Row& row, const Place& place)
{
    Tag tag;
    tag.line = row.line;
    tag.comment = header.text(row, commentColumn);
    Column column = nameColumn;
    try {
        tag.name = header.text(row, nameColumn);
        requireName(tag.name);

        column = stationColumn;
        const std::string station = header.text(row, stationColumn);
        const int stationNo = station.empty() ? 1 : parseStation(station);

        column = formatColumn;
        tag.format = parseFormat(header.text(row, formatColumn));
        const int doubleWords = needsFourWords(tag.format) ? 2 : 1;

        column = countColumn;
        const int count = countOf(header.text(row, countColumn));

        column = registerColumn;
        const std::string regName = header.text(row, registerColumn);
        if (!registerType(library, regName))
            throw UsageFailure(checkSentence(library, checkUnknown, regName, std::string()));

        column = addressColumn;
        tag.address = parseAddress(library, stationNo, regName, header.text(row, addressColumn),
                                   count * doubleWords);

        column = formatColumn;
        if (doubleWords == 2 && tag.address.width == Width::doubleWord)
            tag.address.width = Width::quadWord;
        tag.address = asText(tag.address, tag.format);
        requireFormat(tag.address.width, chosenFormat(tag.format, FormatChoice()));
        readMeaning(tag, header, row, column);
    } catch (const AddressFailure& failure) {
        header.refuse(place, column, failure.why);
    } catch (const UsageFailure& failure) {
        header.refuse(place, column, failure.what());
    }
    return tag;
}

bool isEmpty(const Row& row)
{
    for (const std::string& field : row.fields)
        if (!field.empty())
            return false;
    return true;
}

// Names go into JSON, which takes nothing else.
void requireUtf8(const Row& row, const Header& header, const Place& place)
{
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
        const std::string& field = row.fields[i];
        if (QString::fromStdString(field).toStdString() != field)
            place.refuse(i + 1, header.name(i),
                         "bytes that are no UTF-8; save the file with that encoding");
    }
}

} // namespace

std::vector<Tag> readTags(const Library& library, const std::string& file)
{
    return parseTags(library, contentOf(file, "the tag file " + file), file);
}

std::vector<Tag> parseTags(const Library& library, const std::string& text, const std::string& file)
{
    const CsvRows csv = csvRows(text, file);
    const std::vector<Row>& rows = csv.rows;
    if (rows.empty())
        Place{file, 1}.refuse("the header is missing: name,station,register,address,count,format,"
                              "comment");
    const Header header(rows.front(), Place{file, rows.front().line}, csv.delimiter != ',');

    std::vector<Tag> tags;
    std::map<std::string, int> lineOfName;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const Row& row = rows[i];
        const Place place{file, row.line};
        if (isEmpty(row))
            continue;
        requireUtf8(row, header, place);
        if (row.fields.size() > header.width())
            place.refuse("column " + std::to_string(header.width() + 1) +
                         ": more fields than the header names");
        const Tag tag = tagOf(library, header, row, place);
        const auto [known, isNew] = lineOfName.emplace(tag.name, tag.line);
        if (!isNew)
            header.refuse(place, nameColumn,
                          "'" + tag.name + "' is already on line " + std::to_string(known->second));
        tags.push_back(tag);
    }
    return tags;
}

std::string limitText(double limit)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, limit).ptr);
}

std::vector<Tag> matchingTags(const std::vector<Tag>& tags, const std::string& wildcard)
{
    std::vector<Tag> matching;
    for (const Tag& tag : tags)
        if (isMatch(wildcard, tag.name))
            matching.push_back(tag);
    return matching;
}

const Tag* findTag(const std::vector<Tag>& tags, const std::string& name)
{
    for (const Tag& tag : tags)
        if (tag.name == name)
            return &tag;
    return nullptr;
}

} // namespace dov417
