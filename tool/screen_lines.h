// Lines of text as they fit onto a terminal.
#ifndef DOV417_TOOL_SCREEN_LINES_H
#define DOV417_TOOL_SCREEN_LINES_H

#include <cstddef>
#include <string>
#include <vector>

namespace dov417 {

struct ScreenSize {
    std::size_t rows = 24;
    std::size_t columns = 80;
};

// Of the terminal behind the standard output; as above where it does not say.
ScreenSize screenSize();

// Cut at so many characters, never within one of several bytes.
std::string fitted(const std::string& line, std::size_t columns);

// The same, with a mark where it was cut, and nothing in it that moves a terminal's cursor.
std::string marked(const std::string& line, std::size_t columns);

// Characters of a text in UTF-8.
std::size_t lengthOf(const std::string& text);

// Lines that are too long go on in the next one, indented; broken at blanks.
std::vector<std::string> wrapped(const std::vector<std::string>& lines, std::size_t columns);

// The first ones, and in the last line how many more there are.
std::vector<std::string> shortened(std::vector<std::string> lines, std::size_t room);

} // namespace dov417

#endif
