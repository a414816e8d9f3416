#include "panel/panel_page.h"

namespace dov417 {

PanelPage::PanelPage(PanelDesk& desk) : desk_(desk) {}

} // namespace dov417
