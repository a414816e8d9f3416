// How a project has those parts of the window arranged that a person can drag: the columns of the
// tables of values and their order, and what parts a page.
#ifndef DOV417_PANEL_WINDOW_PARTS_H
#define DOV417_PANEL_WINDOW_PARTS_H

#include <QWidget>
#include <functional>

#include "text/placed_json.h"

namespace dov417 {

// What was never laid out is not named.
OrderedJson partsLayout(const QWidget& window);
// See PanelPage::prepared(). Rows are as they were added where no order is named; all else that is
// not named stays as it is.
std::function<void()> preparedParts(QWidget& window, const OrderedJson& layout);

} // namespace dov417

#endif
