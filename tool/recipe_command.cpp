#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <memory>

#include "session/recipe_file.h"
#include "session/recipe_job.h"
#include "tool/live_command.h"

namespace dov417 {

namespace {

const char* const tagFileExample =
    "  printf 'name,register,address,count\\nspeed,R_W,200,1\\npreset,R_W,210,3\\n' >tags.csv\n";

const char* const recipeFileExample =
    "  printf '{\"speed\": 1500, \"preset\": [1, 2, 3]}\\n' >recipe.json\n";

struct RecipeOptions {
    LineOptions line;
    ItemOptions items; // tags only
    std::string file;
};

// Runs one transfer to its end and says what went wrong; the job then holds the values.
int runTransfer(const RecipeOptions& options, const Library& library,
                const std::vector<RecipeEntry>& entries, RecipeDirection direction,
                const std::function<void(const std::vector<RecipeEntry>&)>& succeeded)
{
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const RecipeEntry& entry : entries)
        items.push_back(entry.item);
    LiveCommand live(library, options.line, items);
    live.endWithoutPort();
    live.open();
    bool ended = false;
    RecipeJob job(live.session(), [&live, &ended]() {
        ended = true;
        live.end();
    });
    if (direction == RecipeDirection::upload)
        job.upload(entries);
    else
        job.download(entries);
    live.run();

    std::vector<std::string> problems = job.problems();
    if (!ended)
        problems.push_back(live.interruption());
    for (const std::string& problem : problems)
        std::fprintf(stderr, "dov417: recipe not transferred: %s\n", problem.c_str());
    if (problems.empty())
        succeeded(job.entries());
    return live.finish(problems.empty());
}

int runUpload(const RecipeOptions& options)
{
    const Library library(options.line.library);
    std::vector<RecipeEntry> entries;
    for (const Item& item : Items(library, options.items.source).tagged(Access::read))
        entries.push_back({item, {}});
    return runTransfer(options, library, entries, RecipeDirection::upload,
                       [&options](const std::vector<RecipeEntry>& values) {
                           writeRecipe(options.file, values);
                           std::printf("%zu tags from the controller into %s\n", values.size(),
                                       options.file.c_str());
                       });
}

int runDownload(const RecipeOptions& options)
{
    const Library library(options.line.library);
    const std::vector<RecipeEntry> entries =
        readRecipe(options.file, Items(library, options.items.source));
    return runTransfer(options, library, entries, RecipeDirection::download,
                       [&options](const std::vector<RecipeEntry>& values) {
                           std::printf("%zu tags from %s into the controller\n", values.size(),
                                       options.file.c_str());
                       });
}

void addTransfer(CLI::App& recipe, const char* name, const char* description,
                 int (*run)(const RecipeOptions&), Action& chosen)
{
    const auto options = std::make_shared<RecipeOptions>();
    CLI::App* command = recipe.add_subcommand(name, description);
    command->add_option("file", options->file, "Recipe: JSON, tag name and value or values")
        ->option_text("FILE")
        ->required();
    addItemOptions(*command, options->items);
    command->get_option("--tags")->required();
    addLineOptions(*command, options->line);
    command->footer(
        std::string("Words go through the driver's recipe transfer, in requests of at most 122 "
                    "words; the driver is asked for it only once it has taken the addresses. Bits "
                    "are written one at a time afterwards.\n"
                    "Example:\n") +
        tagFileExample + (run == runDownload ? recipeFileExample : "") + "  dov417 recipe " + name +
        " recipe.json --tags tags.csv --simulated");
    command->callback(
        [options, run, &chosen]() { chosen = [options, run]() { return run(*options); }; });
}

} // namespace

void addRecipeCommand(CLI::App& app, Action& chosen)
{
    CLI::App* recipe = app.add_subcommand("recipe", "Move a recipe between controller and file");
    recipe->require_subcommand(1);
    addTransfer(*recipe, "upload", "Controller to file: every tag", runUpload, chosen);
    addTransfer(*recipe, "download", "File to controller: the tags that the file names",
                runDownload, chosen);
    recipe->footer(std::string("Examples:\n") + tagFileExample +
                   "  dov417 recipe upload recipe.json --tags tags.csv --simulated\n"
                   "  dov417 recipe download recipe.json --tags tags.csv --simulated");
}

} // namespace dov417
