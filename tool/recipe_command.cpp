#include "tool/recipe_run.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>

#include "line/counted.h"
#include "session/recipe_file.h"
#include "session/recipe_job.h"
#include "text/address_values.h"
#include "tool/commands.h"
#include "tool/json_output.h"
#include "tool/line_source.h"
#include "tool/troubles.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

const char* const tagFileExample =
    "  printf 'name,register,address,count\\nspeed,R_W,200,1\\npreset,R_W,210,3\\n' >tags.csv\n";

const char* const recipeFileExample =
    "  printf '{\"speed\": 1500, \"preset\": [1, 2, 3]}\\n' >recipe.json\n";

const char* const sameRecipeExample =
    "  printf '{\"speed\": 0, \"preset\": [0, 0, 0]}\\n' >recipe.json\n";

struct RecipeOptions {
    LineOptions line;
    ItemOptions items; // tags only
    std::string file;
    bool json = false;
};

bool isStandard(const std::string& file)
{
    return file == "-";
}

void requireTags(const RecipeOptions& options)
{
    if (options.items.source.tags.empty())
        throw UsageFailure("a recipe is of tags: name their file with --tags FILE");
}

void requireFiles(const LineSource& line, const RecipeOptions& options)
{
    requireTags(options);
    if (line.shared() && isStandard(options.file))
        throw UsageFailure("-: the standard input has the next lines, not a recipe");
}

int runUpload(LineSource& line, const RecipeOptions& options)
{
    requireTags(options);
    if (options.json && isStandard(options.file))
        throw UsageFailure("--json and the file - both want the standard output");
    const Library& library = line.library();
    std::vector<RecipeEntry> entries;
    for (const Item& item : Items(library, options.items.source).tagged(Access::read))
        entries.push_back({item, {}});
    RecipeRun run(line, entries, options.json);
    if (isStandard(options.file))
        run.live().keepOutput();
    const bool isMoved = run.upload();
    if (isMoved) {
        writeRecipe(options.file, run.job().entries());
        if (options.json)
            sayJson({{"tags", entries.size()}, {"file", options.file}});
        else if (!isStandard(options.file))
            std::printf("%s from the controller into %s\n",
                        counted(static_cast<long long>(entries.size()), "tag").c_str(),
                        options.file.c_str());
    }
    return run.live().finish(isMoved);
}

// Says for each value what the controller holds now; true if that is the recipe's.
bool reportDownload(const RecipeRun& run, const std::vector<RecipeEntry>& entries)
{
    bool isGood = true;
    std::size_t label = 0;
    for (std::size_t i = 0; i < entries.size(); label += run.valuesOf(i), ++i) {
        const std::string why = run.unread(i);
        if (!why.empty()) {
            isGood = false;
            std::fprintf(stderr, "dov417: %s: taken, but reading it back failed: %s\n",
                         entries.at(i).item.name.c_str(), why.c_str());
            continue;
        }
        run.forEachValue(
            i, label,
            [&isGood](const std::string& name, const std::string& wanted, const std::string& held,
                      bool isSame) {
                isGood = isGood && isSame;
                if (isSame)
                    std::printf("%s = %s: written and read back\n", name.c_str(), wanted.c_str());
                else
                    std::fprintf(stderr, "dov417: %s = %s: taken, but it reads back as %s\n",
                                 name.c_str(), wanted.c_str(), held.c_str());
            });
    }
    return isGood;
}

// All entries; how many are not the same in both, and in `unread` those that are not known.
std::size_t sayEntries(const RecipeRun& run, const Library& library,
                       const std::vector<RecipeEntry>& entries, std::size_t& unread)
{
    std::size_t different = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        bool isSame = false;
        sayJson(run.entryJson(library, i, isSame));
        if (!run.unread(i).empty())
            ++unread;
        else if (!isSame)
            ++different;
    }
    sayJson({{"tags", entries.size()}, {"different", different}, {"unread", unread}});
    return different;
}

int runDownload(LineSource& line, const RecipeOptions& options)
{
    requireFiles(line, options);
    const Library& library = line.library();
    const std::vector<RecipeEntry> entries =
        readRecipe(options.file, Items(library, options.items.source));
    RecipeRun run(line, entries, options.json);
    bool isGood = run.download();
    if (isGood && options.json) {
        std::size_t unread = 0;
        isGood = sayEntries(run, library, entries, unread) == 0 && unread == 0;
        return run.live().finish(isGood);
    }
    isGood = isGood && reportDownload(run, entries);
    if (isGood)
        std::printf("%s from %s into the controller\n",
                    counted(static_cast<long long>(entries.size()), "tag").c_str(),
                    isStandard(options.file) ? "the standard input" : options.file.c_str());
    return run.live().finish(isGood);
}

int runCompare(LineSource& line, const RecipeOptions& options)
{
    requireFiles(line, options);
    const Library& library = line.library();
    const std::vector<RecipeEntry> entries =
        readRecipe(options.file, Items(library, options.items.source));
    RecipeRun run(line, entries, options.json);
    run.readBack();
    if (options.json) {
        std::size_t unknown = 0;
        const bool differ = sayEntries(run, library, entries, unknown) > 0;
        const int code = run.live().finish(unknown == 0);
        return code == exitDone && differ ? exitDifferent : code;
    }

    std::vector<Row> rows = {{" ", "tag", "recipe", "controller"}};
    std::vector<std::pair<std::string, std::string>> unread;
    std::size_t different = 0;
    std::size_t label = 0;
    for (std::size_t i = 0; i < entries.size(); label += run.valuesOf(i), ++i) {
        if (!run.unread(i).empty()) {
            unread.emplace_back(entries.at(i).item.name, run.unread(i));
            continue;
        }
        run.forEachValue(i, label,
                         [&rows, &different](const std::string& name, const std::string& wanted,
                                             const std::string& held, bool isSame) {
                             different += isSame ? 0 : 1;
                             rows.push_back({isSame ? "" : "!", name, wanted, held});
                         });
    }
    for (const std::string& row : aligned(rows, 2))
        std::printf("%s\n", row.c_str());
    if (unread.empty())
        std::printf(different == 0 ? "all values are the same\n" : "%zu of %zu values differ\n",
                    different, rows.size() - 1);
    for (const std::string& each : grouped(unread))
        std::fprintf(stderr, "dov417: %s\n", each.c_str());
    const int code = run.live().finish(unread.empty());
    return code == exitDone && different > 0 ? exitDifferent : code;
}

void addTransfer(CLI::App& recipe, const char* name, const char* description,
                 int (*run)(LineSource&, const RecipeOptions&), const char* firstExample,
                 const std::string& explanation, Action& chosen, LineSource* shared)
{
    const auto options = std::make_shared<RecipeOptions>();
    CLI::App* command = recipe.add_subcommand(name, description);
    command
        ->add_option(
            "file", options->file,
            "Recipe: JSON, tag name and value or values; - is the standard input or output")
        ->option_text("FILE")
        ->required();
    addItemOptions(*command, options->items);
    addJsonFlag(*command, chosen, options->json);
    addLineUse(*command, options->line, options->items, chosen, shared);
    command->footer(explanation + "\nExample:\n" + tagFileExample + firstExample +
                    "  dov417 recipe " + name + " recipe.json --tags tags.csv --simulated");
    command->callback([options, run, shared, &chosen]() { chosen = onLine(shared, options, run); });
}

} // namespace

void addRecipeCommand(CLI::App& app, Action& chosen, LineSource* shared)
{
    CLI::App* recipe =
        app.add_subcommand("recipe", "Move a recipe between controller and file, or compare them");
    recipe->require_subcommand(1);
    const std::string wordsGo =
        "Words go through the driver's recipe transfer, in requests of at most 122 words; the "
        "driver is asked for it only once it has taken the addresses. ";
    const std::string cutOff = "Where it is cut off it says how much had been done.";
    addTransfer(*recipe, "upload", "Controller to file: every tag", runUpload, "",
                wordsGo + "Bits come with the words that hold them. " + cutOff, chosen, shared);
    addTransfer(*recipe, "download", "File to controller: the tags that the file names",
                runDownload, recipeFileExample,
                wordsGo +
                    "Bits are written one at a time afterwards. Then everything is read back, "
                    "and each value is told. " +
                    cutOff,
                chosen, shared);
    addTransfer(*recipe, "compare", "File and controller side by side", runCompare,
                sameRecipeExample,
                "A line for each value that the file names; ! marks those that differ.\n"
                "Exits with 3 if any does, with 1 if one could not be read.",
                chosen, shared);
    recipe->footer(std::string("Examples:\n") + tagFileExample +
                   "  dov417 recipe upload recipe.json --tags tags.csv --simulated\n"
                   "  dov417 recipe download recipe.json --tags tags.csv --simulated");
}

} // namespace dov417
