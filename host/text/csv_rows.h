// The rows of a CSV file, each with the line at which it begins.
#ifndef DOV417_TEXT_CSV_ROWS_H
#define DOV417_TEXT_CSV_ROWS_H

#include <cstddef>
#include <string>
#include <vector>

#include "line/failure.h"

namespace dov417 {

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

struct CsvRows {
    std::vector<Row> rows;
    char delimiter;
    // The last row has no line end, nor has its last field a closing quote: where the file was cut
    // off there, nothing else tells.
    bool mayBeCut = false;
};

// Fields end with a comma, a semicolon or a tab, as those of the first row do. A byte order mark,
// empty lines and lines that begin with # are left out. Throws a UsageFailure; `file` names it.
CsvRows csvRows(const std::string& text, const std::string& file);

} // namespace dov417

#endif
