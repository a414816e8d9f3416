#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "text/tags.h"
#include "tool/defaults.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

// Results of intf_multiCopy().
const int seriesClipped = 2;
// A series longer than any area only repeats its last address.
const int maxCopies = 65536;

struct SeriesOptions {
    LineOptions line;
    std::string regName;
    std::string start;
    std::string tags;
    int count = 1;
    int step = 1;
    bool json = false;
};

Address startOf(const Library& library, const SeriesOptions& options)
{
    if (!options.start.empty())
        return parseAddress(library, options.regName + ":" + options.start);
    if (options.tags.empty())
        throw UsageFailure("the first address is missing");
    const std::vector<Tag> tags = readTags(library, options.tags);
    const Tag* const tag = findTag(tags, options.regName);
    if (!tag)
        throw UsageFailure(options.tags + " has no tag '" + options.regName + "'");
    return tag->address;
}

int runSeries(const SeriesOptions& options)
{
    const Library library(options.line.library);
    const Address start = startOf(library, options);
    QVector<QString> texts;
    QVector<int> values;
    const int result = library.intf_multiCopy(QString::fromStdString(start.regName), start.first,
                                              options.count, options.step, texts, values);
    for (int i = 0; i < texts.size(); ++i) {
        const std::string address = start.regName + ":" + texts.at(i).toStdString();
        if (options.json)
            sayJson({{"address", address}, {"first", values.at(i)}});
        else
            std::printf("%s  %d\n", address.c_str(), values.at(i));
    }
    if (options.json)
        sayJson({{"clipped", result == seriesClipped}});
    if (result == seriesClipped) {
        std::fprintf(stderr,
                     "dov417: the series runs past the highest address and ends in a repetition "
                     "of it\n");
        return exitFailed;
    }
    return exitDone;
}

} // namespace

void addSeriesCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<SeriesOptions>();
    CLI::App* command =
        app.add_subcommand("series", "A series of addresses for copies of one item");
    command->add_option("register", options->regName, "Register type, as in R_W; or a tag's name")
        ->option_text("REGISTER")
        ->required();
    command
        ->add_option("start", options->start,
                     "First address in the type's own form, as in 1.15; a tag has its own")
        ->option_text("[START]");
    addTagOption(*command, options->tags);
    command->add_option("--count", options->count, "How many addresses (1)")
        ->option_text("N")
        ->check(CLI::Range(0, maxCopies));
    command
        ->add_option("--step", options->step,
                     "Distance of two addresses in words, or in bits of a bit type (1); -1: one "
                     "16-bit unit, -2: one 32-bit value; all else below 1 counts as 1")
        ->option_text("S");
    addJsonFlag(*command, chosen, options->json);
    addLibraryOption(*command, options->line);
    addDefaults(*command, {nullptr, &options->tags}, chosen);
    command->footer("Examples:\n"
                    "  dov417 series R_W 10 --count 3 --step 5\n"
                    "  dov417 series M_bit 1.15 --count 3\n"
                    "  dov417 series R_D 0 --count 3 --step -2\n"
                    "Exits with 1 if the series was clipped at the highest address.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runSeries(*options); }; });
}

} // namespace dov417
