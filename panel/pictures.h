// Pictures of each page as it is, for the manual and for who wants to see the panel without a
// screen.
#ifndef DOV417_PANEL_PICTURES_H
#define DOV417_PANEL_PICTURES_H

#include <QPalette>
#include <QString>

#include "panel/main_window.h"

namespace dov417 {

// Of a dark desktop.
QPalette darkPalette();

// NAME-light.png and NAME-dark.png of each page. Of a trial, the recipe is read from its controller
// before. Throws a Failure where one cannot be written.
void takePictures(MainWindow& window, const QString& folder, bool isOfTrial);

} // namespace dov417

#endif
