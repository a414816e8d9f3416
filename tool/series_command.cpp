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
// No area has more addresses.
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
    if (!options.start.empty()) {
        // Neither a station nor an end would be in what is listed.
        if (options.regName.find('/') != std::string::npos)
            throw UsageFailure("'" + options.regName +
                               "': a series has no station; name the register type alone");
        if (options.start.find("..") != std::string::npos)
            throw UsageFailure("'" + options.start +
                               "': a series has no end but --count; name its first address alone");
        return parseAddress(library, options.regName + ":" + options.start);
    }
    if (options.tags.empty())
        throw UsageFailure("the first address is missing");
    const std::vector<Tag> tags = readTags(library, options.tags, remarkOnce);
    const Tag* const tag = findTag(tags, options.regName);
    if (!tag)
        throw UsageFailure(options.tags + " has no tag '" + options.regName + "'");
    return tag->address;
}

struct Series {
    QVector<QString> texts;
    QVector<int> values;
    bool isClipped = false;
};

Series seriesOf(const Library& library, const Address& start, int count, int step)
{
    Series series;
    series.isClipped =
        library.intf_multiCopy(QString::fromStdString(start.regName), start.first, count, step,
                               series.texts, series.values) == seriesClipped;
    return series;
}

// The driver gives copies beyond the area its highest address, which is none of the series.
int copiesThatFit(const Library& library, const Address& start, int count, int step)
{
    int fit = 0;
    int tooMany = count;
    while (tooMany - fit > 1) {
        const int middle = fit + (tooMany - fit) / 2;
        (seriesOf(library, start, middle, step).isClipped ? tooMany : fit) = middle;
    }
    return fit;
}

int runSeries(const SeriesOptions& options)
{
    const Library library(options.line.library);
    const Address start = startOf(library, options);
    const Series series = seriesOf(library, start, options.count, options.step);
    const int fit = series.isClipped ? copiesThatFit(library, start, options.count, options.step)
                                     : static_cast<int>(series.texts.size());
    std::string last;
    for (int i = 0; i < fit; ++i) {
        last = start.regName + ":" + series.texts.at(i).toStdString();
        if (options.json)
            sayJson({{"address", last}, {"first", series.values.at(i)}});
        else
            std::printf("%s  %d\n", last.c_str(), series.values.at(i));
    }
    if (options.json)
        sayJson({{"clipped", series.isClipped}});
    if (series.isClipped) {
        std::fprintf(stderr, "dov417: the series ends at %s, after %d of %d: %s goes to %s\n",
                     last.c_str(), fit, options.count, start.regName.c_str(),
                     series.texts.last().toStdString().c_str());
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
                    "Ends where the area does, and exits with 1 then.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runSeries(*options); }; });
}

} // namespace dov417
