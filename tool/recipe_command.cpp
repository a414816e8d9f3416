#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>

#include "line/counted.h"
#include "session/recipe_file.h"
#include "session/recipe_job.h"
#include "text/address_values.h"
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

std::vector<Item> itemsOf(const std::vector<RecipeEntry>& entries)
{
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const RecipeEntry& entry : entries)
        items.push_back(entry.item);
    return items;
}

std::string progressText(const RecipeProgress& progress, const char* done)
{
    const auto of = [](std::size_t some, std::size_t all, const char* what) {
        return std::to_string(some) + " of " + std::to_string(all) + " " + what;
    };
    std::string text;
    if (progress.allWords > 0)
        text = of(progress.words, progress.allWords, "words");
    if (progress.allBits > 0)
        text += (text.empty() ? "" : " and ") + of(progress.bits, progress.allBits, "bits");
    return text + " had been " + done;
}

std::string textOf(const Item& item, const std::vector<unsigned char>& data, std::size_t index)
{
    const Address value = valueOf(item.address, static_cast<int>(index));
    const std::size_t from = index * static_cast<std::size_t>(byteCount(value));
    return withUnit(valueTexts(value, item.format, data.data() + from).front(), item.format);
}

bool isSame(const Item& item, const std::vector<unsigned char>& a,
            const std::vector<unsigned char>& b, std::size_t index)
{
    const auto size = static_cast<std::ptrdiff_t>(byteCount(valueOf(item.address, 0)));
    const auto first = static_cast<std::ptrdiff_t>(index) * size;
    return std::equal(a.begin() + first, a.begin() + first + size, b.begin() + first);
}

// One recipe on one line. The job holds what came of it.
class RecipeRun {
public:
    RecipeRun(LineSource& line, const std::vector<RecipeEntry>& entries, bool json)
        : entries_(entries), labels_(labelViews(line.library(), itemsOf(entries))), isJson_(json),
          live_(line.take(itemsOf(entries), gapOf(line, entries))),
          job_(live_.session(), [this]() { next(); })
    {
        live_.endWithoutPort();
        if (isJson_)
            live_.countInJson();
        live_.open();
    }

    LiveCommand& live()
    {
        return live_;
    }
    const RecipeJob& job() const
    {
        return job_;
    }

    // True if everything was moved; else says why not, and how much was.
    bool upload()
    {
        job_.upload(entries_);
        live_.run();
        return isMoved("read; the file is as it was");
    }
    bool download()
    {
        goesOn_ = true;
        job_.download(entries_);
        live_.run();
        return isMoved("written");
    }
    void readBack()
    {
        job_.readBack(entries_);
        live_.run();
    }

    // Why what the controller holds for an entry is not known; empty where it is.
    std::string unread(std::size_t entry) const
    {
        return entry < job_.readings().size() ? job_.readings().at(entry).problem
                                              : live_.interruption();
    }
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
                 textOf(own.item, held, i), isSame(own.item, own.data, held, i));
    }
    // The same as an object, and whether all of its values are the same.
    OutputJson entryJson(const Library& library, std::size_t entry, bool& isSame) const
    {
        const RecipeEntry& own = entries_.at(entry);
        OutputJson object = itemJson(library, own.item);
        addValues(object, "recipe", own.item, own.data);
        isSame = unread(entry).empty() && own.data == job_.readings().at(entry).data;
        if (!unread(entry).empty()) {
            object["failure"] = unread(entry);
            return object;
        }
        addValues(object, "controller", own.item, job_.readings().at(entry).data);
        object["same"] = isSame;
        return object;
    }
    std::size_t valuesOf(std::size_t entry) const
    {
        return static_cast<std::size_t>(valueCount(entries_.at(entry).item.address));
    }

private:
    static int gapOf(LineSource& line, const std::vector<RecipeEntry>& entries)
    {
        const LineOptions& options = line.options();
        if (options.gap)
            requireUntornValues(line.library(), itemsOf(entries), *options.gap);
        return options.singleReadGap();
    }

    void next()
    {
        isMoved_ = isMoved_ || job_.problems().empty();
        if (goesOn_ && isMoved_) {
            goesOn_ = false;
            job_.readBack();
        } else {
            live_.end();
        }
    }

    bool isMoved(const char* done) const
    {
        if (isMoved_)
            return true;
        std::vector<std::string> problems = job_.problems();
        if (problems.empty())
            problems.push_back(live_.interruption());
        if (isJson_)
            sayJson({{"problems", problems}, {"progress", progressText(job_.progress(), done)}});
        for (const std::string& problem : problems)
            std::fprintf(stderr, "dov417: recipe not transferred: %s\n", problem.c_str());
        std::fprintf(stderr, "dov417: %s\n", progressText(job_.progress(), done).c_str());
        return false;
    }

    std::vector<RecipeEntry> entries_;
    std::vector<ViewLabel> labels_;
    bool isJson_;
    bool goesOn_ = false; // to the read-back, once all is written
    bool isMoved_ = false;
    LiveCommand& live_;
    RecipeJob job_;
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
    requireOtherFile(options.items.source, options.file);
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
