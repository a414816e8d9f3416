// What a person types into the fields of a project, as its reader takes it and what it says of it.
#ifndef DOV417_PANEL_PROJECT_FIELDS_H
#define DOV417_PANEL_PROJECT_FIELDS_H

#include <QString>

#include "line/failure.h"
#include "text/placed_json.h"

namespace dov417 {

// A number, or the text itself where it is none.
OrderedJson typedNumber(const QString& text);
// Without what stands before the member, "line." or "stations[0].": it is no place that a person
// knows.
QString fieldVerdict(const Failure& failure, const QString& before);

} // namespace dov417

#endif
