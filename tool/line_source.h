// Where a command gets its line: one of its own, opened for it, or one that stays open for several.
#ifndef DOV417_TOOL_LINE_SOURCE_H
#define DOV417_TOOL_LINE_SOURCE_H

#include <functional>
#include <memory>
#include <optional>

#include "tool/live_command.h"

namespace dov417 {

class LineSource {
public:
    LineSource() = default;
    virtual ~LineSource() = default;
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    virtual const Library& library() = 0;
    virtual const LineOptions& options() const = 0;
    // For a command that works on these items with this merge gap; it is to open the line.
    virtual LiveCommand& take(const std::vector<Item>& items, int gap) = 0;
    // What items are looked up in where the command says nothing else; not null where the line is
    // shared, and the standard input too.
    virtual const ItemSource* shared() const = 0;
};

class OwnLine : public LineSource {
public:
    explicit OwnLine(const LineOptions& options);

    const Library& library() override;
    const LineOptions& options() const override;
    LiveCommand& take(const std::vector<Item>& items, int gap) override;
    const ItemSource* shared() const override;

private:
    LineOptions options_;
    Library library_;
    std::optional<LiveCommand> live_;
};

// The options of a line of its own, or what the shared one has.
void addLineUse(CLI::App& command, LineOptions& line, ItemOptions& items, Action& chosen,
                LineSource* shared);

// What a command does once it was chosen: on the shared line, or on one of its own.
template <typename Options>
std::function<int()> onLine(LineSource* shared, std::shared_ptr<Options> options,
                            int (*run)(LineSource&, const Options&))
{
    return [shared, options, run]() {
        if (shared)
            return run(*shared, *options);
        OwnLine own(options->line);
        return run(own, *options);
    };
}

} // namespace dov417

#endif
