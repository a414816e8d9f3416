// Which pictures there are of the panel's pages: at which moment of the session, and what a person
// has done on the page before.
#ifndef DOV417_DOCS_PICTURES_PAGE_PICTURES_H
#define DOV417_DOCS_PICTURES_PAGE_PICTURES_H

#include "panel/main_window.h"
#include "session_player.h"

namespace dov417 {

struct PictureSettings {
    QString folder;
    QSize size;
    bool isLight = true;
    bool isDark = true;
    bool isManual = false; // those that are dark there, too
};

// NAME-light.png and NAME-dark.png of each page, and a light one of the dialog that offers what was
// not saved. Throws a Failure where there is a page of which nothing is known here, or a picture
// cannot be written.
void takePagePictures(MainWindow& window, SessionPlayer& player, const PictureSettings& settings);

} // namespace dov417

#endif
