// Lines that redraw in place on a terminal, which is left as it was found.
#ifndef DOV417_TOOL_SCREEN_H
#define DOV417_TOOL_SCREEN_H

#include <string>
#include <vector>

#include "tool/terminal.h"

namespace dov417 {

constexpr int redrawMilliseconds = 250;

// The terminal's second screen, without keys.
class Screen {
public:
    static bool isTerminal();

    // The foot always shows; of the details a third of the screen, of the body what fits above.
    // Long lines of the body are cut, others wrapped.
    void draw(const std::vector<std::string>& body, const std::vector<std::string>& details,
              const std::vector<std::string>& foot);

private:
    Terminal terminal_{false, {[](const std::string&) {}, []() {}, []() {}}};
};

} // namespace dov417

#endif
