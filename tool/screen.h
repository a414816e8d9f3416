// Lines that redraw in place on a terminal, which is left as it was found.
#ifndef DOV417_TOOL_SCREEN_H
#define DOV417_TOOL_SCREEN_H

#include <string>
#include <vector>

namespace dov417 {

constexpr int redrawMilliseconds = 250;

// Uses the terminal's second screen while it lives: what was on the first comes back at the end.
class Screen {
public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    static bool isTerminal();

    // The foot always shows; of the details a third of the screen, of the body what fits above.
    // Long lines of the body are cut, others wrapped.
    void draw(const std::vector<std::string>& body, const std::vector<std::string>& details,
              const std::vector<std::string>& foot);
};

} // namespace dov417

#endif
