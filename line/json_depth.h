// How deep a JSON file may nest. What nests deeper is nobody's file, and going through it, or
// writing it, would take the stack.
#ifndef DOV417_LINE_JSON_DEPTH_H
#define DOV417_LINE_JSON_DEPTH_H

#include "line/failure.h"

namespace dov417 {

constexpr int maxJsonDepth = 64;

// For a parser, which throws a UsageFailure then.
template <typename Json>
typename Json::parser_callback_t noDeeperThanAllowed()
{
    return [](int depth, typename Json::parse_event_t, Json&) {
        if (depth > maxJsonDepth)
            throw UsageFailure("nested too deep");
        return true;
    };
}

} // namespace dov417

#endif
