#include "tool/screen.h"

#include <algorithm>
#include <unistd.h>

#include "tool/screen_lines.h"

namespace dov417 {

bool Screen::isTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

void Screen::draw(const std::vector<std::string>& body, const std::vector<std::string>& details,
                  const std::vector<std::string>& foot)
{
    const ScreenSize size = screenSize();
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
    Terminal::put(text + "\033[J"); // nothing below
}

} // namespace dov417
