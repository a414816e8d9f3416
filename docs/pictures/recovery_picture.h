// The picture of the dialog that offers what was not saved.
#ifndef DOV417_DOCS_PICTURES_RECOVERY_PICTURE_H
#define DOV417_DOCS_PICTURES_RECOVERY_PICTURE_H

#include <QPixmap>

#include "panel/main_window.h"

namespace dov417 {

// With these values in its project.
QPixmap recoveryPicture(MainWindow& window, const std::vector<Item>& items);

} // namespace dov417

#endif
