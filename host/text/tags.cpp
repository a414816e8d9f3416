#include "text/tags.h"

#include <array>
#include <charconv>
#include <csv.h>
#include <map>

#include "text/text_file.h"

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
    columnCount
};
const std::array<const char*, columnCount> columnNames = {"name",  "station", "register", "address",
                                                          "count", "format",  "comment"};
const std::array<Column, 3> neededColumns = {nameColumn, registerColumn, addressColumn};

// No register type has more units.
const int maxValues = 65536;

struct Row {
    int line;
    std::vector<std::string> fields;
};

// Where a mistake is, for the message.
struct Place {
    std::string file;
    int line;

    [[noreturn]] void refuse(const std::string& why) const
    {
        throw UsageFailure(file + ":" + std::to_string(line) + ": " + why);
    }
    // column: 1-based, counted in fields as a spreadsheet counts them.
    [[noreturn]] void refuse(std::size_t column, const std::string& name,
                             const std::string& why) const
    {
        refuse("column " + std::to_string(column) + " (" + name + "): " + why);
    }
};

// What libcsv's callbacks collect.
struct Collector {
    std::vector<Row> rows;
    std::vector<std::string> fields;
    int rowLine = 1; // line at which the row in progress starts
};

void fieldEnds(void* text, std::size_t length, void* data)
{
    auto* collector = static_cast<Collector*>(data);
    collector->fields.emplace_back(static_cast<const char*>(text), length);
}

void rowEnds(int, void* data)
{
    auto* collector = static_cast<Collector*>(data);
    collector->rows.push_back({collector->rowLine, collector->fields});
    collector->fields.clear();
}

class Parser {
public:
    Parser()
    {
        if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0)
            throw Failure("no memory for reading CSV");
    }
    ~Parser()
    {
        csv_free(&parser_);
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // One physical line at a time, with its line end, so that each row knows its line: a quoted
    // field may run over several of them.
    std::vector<Row> rows(const std::string& text, const Place& start)
    {
        Collector collector;
        Place place = start;
        std::size_t from = 0;
        while (from < text.size()) {
            const std::size_t newline = text.find('\n', from);
            const std::size_t to = newline == std::string::npos ? text.size() : newline + 1;
            const std::size_t rowsBefore = collector.rows.size();
            const std::size_t taken =
                csv_parse(&parser_, text.data() + from, to - from, fieldEnds, rowEnds, &collector);
            if (taken != to - from)
                refuse(place, collector);
            ++place.line;
            // A row ended, or none has begun (the state 0 of the parser, after an empty line): what
            // follows is another row.
            if (collector.rows.size() != rowsBefore || parser_.pstate == 0)
                collector.rowLine = place.line;
            from = to;
        }
        if (csv_fini(&parser_, fieldEnds, rowEnds, &collector) != 0) {
            place.line = collector.rowLine;
            refuse(place, collector);
        }
        return collector.rows;
    }

private:
    [[noreturn]] void refuse(const Place& place, const Collector& collector)
    {
        const int error = csv_error(&parser_);
        place.refuse("column " + std::to_string(collector.fields.size() + 1) + ": " +
                     (error == CSV_EPARSE ? "a quote that does not open or close a whole field"
                                          : csv_strerror(error)));
    }

    csv_parser parser_;
};

// Which field of a row holds which column; -1: the file has no such column.
class Header {
public:
    Header(const Row& row, const Place& place) : names_(row.fields)
    {
        places_.fill(-1);
        for (std::size_t i = 0; i < row.fields.size(); ++i) {
            int column = 0;
            while (column < columnCount && row.fields[i] != columnNames[std::size_t(column)])
                ++column;
            if (column == columnCount)
                place.refuse(i + 1, row.fields[i], "unknown column; there are " + allNames());
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
    static std::string allNames()
    {
        std::string names;
        for (const char* name : columnNames)
            names += (names.empty() ? "" : ", ") + std::string(name);
        return names;
    }

    std::vector<std::string> names_;
    std::array<int, columnCount> places_;
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

        column = countColumn;
        const int count = countOf(header.text(row, countColumn));

        column = registerColumn;
        const std::string regName = header.text(row, registerColumn);
        if (!registerType(library, regName))
            throw UsageFailure(checkSentence(library, checkUnknown, regName, std::string()));

        column = addressColumn;
        tag.address =
            parseAddress(library, stationNo, regName, header.text(row, addressColumn), count);

        column = formatColumn;
        tag.format = parseFormat(header.text(row, formatColumn));
        requireFormat(tag.address.width, chosenFormat(tag.format, FormatChoice()));
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

// Spreadsheets put it before the first name.
std::string withoutByteOrderMark(const std::string& text)
{
    const std::string mark = "\xEF\xBB\xBF";
    return text.compare(0, mark.size(), mark) == 0 ? text.substr(mark.size()) : text;
}

} // namespace

std::vector<Tag> readTags(const Library& library, const std::string& file)
{
    return parseTags(library, contentOf(file, "the tag file " + file), file);
}

std::vector<Tag> parseTags(const Library& library, const std::string& text, const std::string& file)
{
    const std::vector<Row> rows = Parser().rows(withoutByteOrderMark(text), Place{file, 1});
    if (rows.empty())
        Place{file, 1}.refuse("the header is missing: name,station,register,address,count,format,"
                              "comment");
    const Header header(rows.front(), Place{file, rows.front().line});

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

const Tag* findTag(const std::vector<Tag>& tags, const std::string& name)
{
    for (const Tag& tag : tags)
        if (tag.name == name)
            return &tag;
    return nullptr;
}

} // namespace dov417
