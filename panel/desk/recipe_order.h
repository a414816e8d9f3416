// What the window asks for of a recipe, and what the line's thread tells of it.
#ifndef DOV417_PANEL_RECIPE_ORDER_H
#define DOV417_PANEL_RECIPE_ORDER_H

#include <QMetaType>
#include <string>
#include <vector>

#include "line/clock.h"
#include "session/recipe_job.h"

namespace dov417 {

enum class RecipeKind {
    read,    // what the controller holds, and no more
    upload,  // the same, as a recipe
    download // the entries' data to the controller, then read back
};

struct RecipeOrder {
    long long number = 0;
    int line = 0; // that it was meant for
    RecipeKind kind = RecipeKind::read;
    std::vector<RecipeEntry> entries;
    Clock::time_point asked{};
};

struct RecipeNews {
    long long number = 0;
    RecipeKind kind = RecipeKind::read;
    bool isReadingBack = false; // what it was to move has been moved, or it was cancelled
    bool isCancelled = false;   // by hand
    bool hasEnded = false;
    RecipeProgress progress;
    // At the end: why not everything was moved; empty where it was.
    std::vector<std::string> problems;
    // At the end, one for each entry: what the controller held. None where it was not read.
    std::vector<RecipeReading> readings;
    Clock::time_point asOf{}; // no reading is older
    // At the end, one for each reading: nor is this one older than that.
    std::vector<Clock::time_point> asOfEach;
};

} // namespace dov417

Q_DECLARE_METATYPE(dov417::RecipeNews)

#endif
