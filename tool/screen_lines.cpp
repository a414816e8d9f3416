#include "tool/screen_lines.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

#include "line/shown_text.h"

namespace dov417 {

ScreenSize screenSize()
{
    ScreenSize size;
    winsize found = winsize();
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &found) == 0 && found.ws_row > 0 && found.ws_col > 0) {
        size.rows = found.ws_row;
        size.columns = found.ws_col;
    }
    return size;
}

namespace {

bool continuesACharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

std::size_t lengthOf(const std::string& text)
{
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continuesACharacter));
}

std::string marked(const std::string& line, std::size_t columns)
{
    const std::string clean = shownText(line);
    return lengthOf(clean) <= columns || columns == 0 ? fitted(clean, columns)
                                                      : fitted(clean, columns - 1) + ">";
}

std::string fitted(const std::string& line, std::size_t columns)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (!continuesACharacter(line.at(i)) && ++characters > columns)
            return line.substr(0, i);
    }
    return line;
}

std::vector<std::string> wrapped(const std::vector<std::string>& lines, std::size_t columns)
{
    const std::string indent = "    ";
    std::vector<std::string> result;
    for (const std::string& line : lines) {
        std::string rest = line;
        while (columns > 2 * indent.size() && fitted(rest, columns) != rest) {
            const std::size_t blank = fitted(rest, columns).find_last_of(' ');
            if (blank == std::string::npos || blank < indent.size())
                break; // one long word is cut
            result.push_back(rest.substr(0, blank));
            rest.replace(0, blank + 1, indent);
        }
        result.push_back(rest);
    }
    return result;
}

std::vector<std::string> shortened(std::vector<std::string> lines, std::size_t room)
{
    if (lines.size() > room) {
        const std::size_t hidden = lines.size() - room + 1;
        lines.resize(room - 1);
        lines.push_back("... and " + std::to_string(hidden) + " more");
    }
    return lines;
}

} // namespace dov417
