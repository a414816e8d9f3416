// The line's time in words: what a span is, and all that is known of a frame.
#ifndef DOV417_PANEL_WIRE_WORDS_H
#define DOV417_PANEL_WIRE_WORDS_H

#include <QString>

#include "line/areas.h"
#include "panel/frames/wire_shares.h"

namespace dov417 {

// "request", "the controller's time", ...
QString wordOf(SpanKind kind);
QString wordOf(WireUse use);
// For whoever meets the word for the first time.
QString explanationOf(WireUse use);

// "2.292 ms"; "1.204 s" from a second on; with so many decimals of them.
QString wireTimeText(Clock::duration duration, int decimals = 3);

// As short as it can be beside the frame: "R_W:100..107".
QString shortFrameText(const Transmission& frame, const std::vector<Area>& areas);
// A line each: what was asked, what came of it, and what took how long.
QString frameText(const WireFrame& frame, const std::vector<Area>& areas);

// How much of the line bytes use, in a sentence.
QString sharesText(const WireShares& shares);

} // namespace dov417

#endif
