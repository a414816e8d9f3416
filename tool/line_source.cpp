#include "tool/line_source.h"

#include "tool/defaults.h"
#include "tool/own_files.h"

namespace dov417 {

OwnLine::OwnLine(const LineOptions& options) : options_(options), library_(options.library) {}

const Library& OwnLine::library()
{
    return library_;
}

const LineOptions& OwnLine::options() const
{
    return options_;
}

LiveCommand& OwnLine::take(const std::vector<Item>& items, int gap)
{
    LineOptions options = options_;
    options.gap = gap;
    return live_.emplace(library_, options, items);
}

const ItemSource* OwnLine::shared() const
{
    return nullptr;
}

void addLineUse(CLI::App& command, LineOptions& line, ItemOptions& items, Action& chosen,
                LineSource* shared)
{
    if (shared) {
        items.source = *shared->shared();
        command.parse_complete_callback(
            [&command, tags = items.source.tags]() { requireOwnFiles(command, tags, ""); });
        return;
    }
    addLineOptions(command, line);
    addDefaults(command, {&line, &items.source.tags}, chosen);
}

} // namespace dov417
