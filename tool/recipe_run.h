// One recipe on one line: moved, read back, and what came of it value by value.
#ifndef DOV417_TOOL_RECIPE_RUN_H
#define DOV417_TOOL_RECIPE_RUN_H

#include <cstddef>
#include <string>
#include <vector>

#include "session/recipe_file.h"
#include "session/recipe_job.h"
#include "tool/json_output.h"
#include "tool/line_source.h"
#include "tool/view_table.h"

namespace dov417 {

std::vector<Item> itemsOf(const std::vector<RecipeEntry>& entries);

// A value of an item's bytes as people read it, with its unit.
std::string textOf(const Item& item, const std::vector<unsigned char>& data, std::size_t index);

// Of two readings of an item: are these bytes of one value the same?
bool isSameValue(const Item& item, const std::vector<unsigned char>& a,
                 const std::vector<unsigned char>& b, std::size_t index);

// The job holds what came of it.
class RecipeRun {
public:
    RecipeRun(LineSource& line, const std::vector<RecipeEntry>& entries, bool json);

    LiveCommand& live()
    {
        return live_;
    }
    const RecipeJob& job() const
    {
        return job_;
    }

    // True if everything was moved; else says why not, and how much was.
    bool upload();
    bool download();
    void readBack();

    // Why what the controller holds for an entry is not known; empty where it is.
    std::string unread(std::size_t entry) const;

    // Calls for each value of an entry that was read: its label, the value as it is in the recipe
    // and in the controller, and whether they are the same. An entry's values follow the last
    // one's.
    template <typename Call>
    void forEachValue(std::size_t entry, std::size_t firstLabel, Call call) const
    {
        const RecipeEntry& own = entries_.at(entry);
        const std::vector<unsigned char>& held = job_.readings().at(entry).data;
        for (std::size_t i = 0; i < valuesOf(entry); ++i)
            call(labels_.at(firstLabel + i).name, textOf(own.item, own.data, i),
                 textOf(own.item, held, i), isSameValue(own.item, own.data, held, i));
    }
    // The same as an object, and whether all of its values are the same.
    OutputJson entryJson(const Library& library, std::size_t entry, bool& isSame) const;

    std::size_t valuesOf(std::size_t entry) const;

private:
    void next();
    bool isMoved(const char* done) const;

    std::vector<RecipeEntry> entries_;
    std::vector<ViewLabel> labels_;
    bool isJson_;
    bool goesOn_ = false; // to the read-back, once all is written
    bool isMoved_ = false;
    LiveCommand& live_;
    RecipeJob job_;
};

} // namespace dov417

#endif
