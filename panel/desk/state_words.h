// States as people read them: a symbol and a word, never a colour alone.
#ifndef DOV417_PANEL_STATE_WORDS_H
#define DOV417_PANEL_STATE_WORDS_H

#include <QString>

#include "panel/desk/panel_desk.h"

namespace dov417 {

QString symbolOf(ValueState state);
QString wordOf(ValueState state);
// "✓ good", "✗ write failed, and old: exception 2 (illegal data address)"
QString standingText(const ValueStanding& standing);

// Without its unit where there is none to be known: "?".
QString shownValue(const PanelValue& value, const ValueBook& book);
// "0.3 s"; "never".
QString ageText(const View* view, Clock::time_point now);

// How the line is, in a sentence. Without statistics nobody is known not to have answered.
QString lineSentence(const LineState& state, bool isSilent, const LinkStatistics* statistics);

} // namespace dov417

#endif
