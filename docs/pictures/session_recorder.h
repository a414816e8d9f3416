// Makes the session that the pictures are taken of: a simulated controller of three stations at
// 9600 baud for a minute, with everything that goes wrong on a line. It takes that minute.
#ifndef DOV417_DOCS_PICTURES_SESSION_RECORDER_H
#define DOV417_DOCS_PICTURES_SESSION_RECORDER_H

#include "panel/desk/panel_tags.h"
#include "recorded_session.h"

namespace dov417 {

RecordedSession recordSession(const Library& library, const PanelTags& tags);

} // namespace dov417

#endif
