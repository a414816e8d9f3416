// How a project has the window arranged.
#ifndef DOV417_PANEL_WINDOW_LAYOUT_H
#define DOV417_PANEL_WINDOW_LAYOUT_H

#include <QSize>

#include "text/placed_json.h"

namespace dov417 {

struct WindowLayout {
    int page = 0; // from 1; 0: none is named
    QSize size;   // not valid: none is named
    bool isMaximized = false;
};

// Throws a UsageFailure that begins with the member.
WindowLayout windowLayout(const OrderedJson& layout);

} // namespace dov417

#endif
