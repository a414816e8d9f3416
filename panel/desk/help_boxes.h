// What the menu Help shows.
#ifndef DOV417_PANEL_HELP_BOXES_H
#define DOV417_PANEL_HELP_BOXES_H

#include <QMainWindow>

#include "driver/library.h"

namespace dov417 {

// Every key of the window's menus, and those of the pages.
void showKeys(QMainWindow& window);
void showAbout(QMainWindow& window, const Library& library);

} // namespace dov417

#endif
