#include "tool/screen.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace dov417 {

namespace {

struct Size {
    std::size_t rows = 24;
    std::size_t columns = 80;
};

Size terminalSize()
{
    Size size;
    winsize found = winsize();
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &found) == 0 && found.ws_row > 0 && found.ws_col > 0) {
        size.rows = found.ws_row;
        size.columns = found.ws_col;
    }
    return size;
}

// Cut at so many characters, never within one of several bytes.
std::string fitted(const std::string& line, std::size_t columns)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool continues = (static_cast<unsigned char>(line.at(i)) & 0xC0) == 0x80;
        if (!continues && ++characters > columns)
            return line.substr(0, i);
    }
    return line;
}

// Lines that are too long go on in the next one, indented; broken at blanks.
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

// The first ones, and in the last line how many more there are.
std::vector<std::string> shortened(std::vector<std::string> lines, std::size_t room)
{
    if (lines.size() > room) {
        const std::size_t hidden = lines.size() - room + 1;
        lines.resize(room - 1);
        lines.push_back("... and " + std::to_string(hidden) + " more");
    }
    return lines;
}

void put(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace

Screen::Screen()
{
    put("\033[?1049h\033[?25l"); // second screen, no cursor
}

Screen::~Screen()
{
    put("\033[?25h\033[?1049l");
}

bool Screen::isTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

void Screen::draw(const std::vector<std::string>& body, const std::vector<std::string>& details,
                  const std::vector<std::string>& foot)
{
    const Size size = terminalSize();
    std::vector<std::string> below =
        shortened(wrapped(details, size.columns), std::max<std::size_t>(1, size.rows / 3));
    const std::vector<std::string> last = wrapped(foot, size.columns);
    below.insert(below.end(), last.begin(), last.end());
    const std::size_t room = size.rows > below.size() + 1 ? size.rows - below.size() - 1 : 1;
    std::vector<std::string> lines = shortened(body, room);
    lines.emplace_back();
    lines.insert(lines.end(), below.begin(), below.end());
    std::string text = "\033[H"; // top left
    for (std::size_t i = 0; i < lines.size() && i < size.rows; ++i)
        text += (i == 0 ? "" : "\r\n") + fitted(lines.at(i), size.columns) + "\033[K";
    put(text + "\033[J"); // nothing below
}

} // namespace dov417
