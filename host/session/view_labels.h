// What the values that are watched are called, and how they are written.
#ifndef DOV417_SESSION_VIEW_LABELS_H
#define DOV417_SESSION_VIEW_LABELS_H

#include <string>
#include <vector>

#include "session/items.h"
#include "session/views.h"

namespace dov417 {

// What a view is called and how its value is written.
struct ViewLabel {
    std::string name;    // of the tag, with [n] for the nth of several values; else the address
    std::string address; // "1/R_W:100"
    Format format;
};

// One label for each view that a session makes of these items, in the same order.
std::vector<ViewLabel> labelViews(const Library& library, const std::vector<Item>& items);
// Those of one item, behind the others.
void labelViews(const Library& library, const Item& item, std::vector<ViewLabel>& labels);

// Adds the format to the names of those that are written differently and are called the same:
// "1/R_D:10@float".
void tellApart(std::vector<ViewLabel>& labels);

std::string valueText(const View& view, const ViewLabel& label);
std::string previousText(const View& view, const ViewLabel& label);

// The same for people, with the unit.
std::string shownText(const View& view, const ViewLabel& label);
std::string shownPreviousText(const View& view, const ViewLabel& label);

// One of its values, as the hex digits of the number that it is.
std::string bitsText(const View& view, const ValueBytes& value, const ViewLabel& label);

} // namespace dov417

#endif
