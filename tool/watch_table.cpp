#include "tool/watch_table.h"

#include <algorithm>

#include "tool/screen_lines.h"

namespace dov417 {

namespace {

constexpr std::size_t minNameLength = 8;
const std::string nameHeading = "name";
const std::string cutMark = "..";

std::size_t widthOf(const std::vector<Row>& rows, std::size_t column)
{
    std::size_t width = 0;
    for (const Row& row : rows)
        width = std::max(width, lengthOf(row.at(column)));
    return width;
}

std::size_t widthOf(const std::vector<Row>& rows)
{
    std::size_t width = 0;
    for (std::size_t column = 0; column < rows.front().size(); ++column)
        width += widthOf(rows, column) + (column == 0 ? 0 : 2);
    return width;
}

void leaveOut(std::vector<Row>& rows, const std::string& heading)
{
    const Row& headings = rows.front();
    const auto place = std::find(headings.begin(), headings.end(), heading) - headings.begin();
    for (Row& row : rows)
        row.erase(row.begin() + place);
}

// Names that are alike at the beginning differ at the end.
std::string shortName(const std::string& name, std::size_t room)
{
    const std::size_t length = lengthOf(name);
    if (length <= room)
        return name;
    const std::size_t kept = room - cutMark.size();
    const std::string before = fitted(name, length - (kept - kept / 3));
    return fitted(name, kept / 3) + cutMark + name.substr(before.size());
}

} // namespace

std::vector<std::string> watchTable(std::vector<Row> rows, std::size_t columns)
{
    const bool named = rows.front().front() == nameHeading;
    std::size_t textColumns = named ? 2 : 1;
    for (const char* const heading : {"changes", "previous"})
        if (widthOf(rows) > columns)
            leaveOut(rows, heading);
    if (named && widthOf(rows) > columns) {
        leaveOut(rows, "address");
        textColumns = 1;
    }
    const std::size_t nameLength = widthOf(rows, 0);
    if (named && widthOf(rows) > columns) {
        const std::size_t others = widthOf(rows) - nameLength;
        const std::size_t room = std::max(minNameLength, columns > others ? columns - others : 0);
        for (Row& row : rows)
            row.front() = shortName(row.front(), room);
    }
    return aligned(rows, textColumns);
}

} // namespace dov417
