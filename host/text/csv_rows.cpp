#include "text/csv_rows.h"

#include <algorithm>
#include <csv.h>

namespace dov417 {

namespace {

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

// What ends the fields of the header ends all of them.
char delimiterOf(const std::string& text)
{
    std::size_t from = 0;
    while (from < text.size() && (text.at(from) == '#' || text.at(from) == '\n'))
        from = std::min(text.find('\n', from), text.size() - 1) + 1;
    const std::size_t at = text.find_first_of(",;\t\n", from);
    return at == std::string::npos || text.at(at) == '\n' ? ',' : text.at(at);
}

class Parser {
public:
    explicit Parser(char delimiter) : delimiter_(delimiter)
    {
        if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0)
            throw Failure("no memory for reading CSV");
        csv_set_delim(&parser_, static_cast<unsigned char>(delimiter));
    }
    ~Parser()
    {
        csv_free(&parser_);
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // One physical line at a time, with its line end, so that each row knows its line: a quoted
    // field may run over several of them.
    CsvRows rows(const std::string& text, const Place& start)
    {
        Collector collector;
        Place place = start;
        std::size_t from = 0;
        while (from < text.size()) {
            const std::size_t newline = text.find('\n', from);
            const std::size_t to = newline == std::string::npos ? text.size() : newline + 1;
            const bool rowBegins = collector.rowLine == place.line;
            if (rowBegins && text.at(from) == '#') {
                collector.rowLine = ++place.line;
                from = to;
                continue;
            }
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
        const std::size_t rowsEnded = collector.rows.size();
        if (csv_fini(&parser_, fieldEnds, rowEnds, &collector) != 0) {
            place.line = collector.rowLine;
            refuse(place, collector);
        }
        const bool hasNoEnd = collector.rows.size() != rowsEnded;
        return {collector.rows, delimiter_, hasNoEnd && text.back() != '"'};
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
    char delimiter_;
};

// Spreadsheets put it before the first name.
std::string withoutByteOrderMark(const std::string& text)
{
    const std::string mark = "\xEF\xBB\xBF";
    return text.compare(0, mark.size(), mark) == 0 ? text.substr(mark.size()) : text;
}

// As some spreadsheets write it above the header, and read it: "sep=;".
const char* const delimiterName = "sep=";
constexpr std::size_t delimiterNameLength = 4;

bool namesItsDelimiter(const std::string& text)
{
    return text.compare(0, delimiterNameLength, delimiterName) == 0 &&
           text.find_first_of("\r\n", delimiterNameLength) == delimiterNameLength + 1;
}

bool isUtf16(const std::string& text)
{
    return text.compare(0, 2, "\xFF\xFE") == 0 || text.compare(0, 2, "\xFE\xFF") == 0;
}

} // namespace

CsvRows csvRows(const std::string& text, const std::string& file)
{
    if (isUtf16(text))
        Place{file, 1}.refuse("this is UTF-16; save it as CSV in UTF-8");
    std::string content = withoutByteOrderMark(text);
    const bool isNamed = namesItsDelimiter(content);
    const char delimiter = isNamed ? content.at(delimiterNameLength) : delimiterOf(content);
    if (isNamed)
        content.insert(content.begin(), '#'); // no row, and yet a line
    return Parser(delimiter).rows(content, Place{file, 1});
}

} // namespace dov417
