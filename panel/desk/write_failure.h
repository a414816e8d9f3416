// A file that could not be written, in the panel's words.
#ifndef DOV417_PANEL_WRITE_FAILURE_H
#define DOV417_PANEL_WRITE_FAILURE_H

#include <QString>

#include "line/failure.h"

namespace dov417 {

// why: as the system says it; empty where nobody does.
Failure cannotWrite(const QString& file, const QString& why);

} // namespace dov417

#endif
