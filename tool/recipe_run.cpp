#include "tool/recipe_run.h"

#include <algorithm>
#include <cstdio>

#include "text/address_values.h"

namespace dov417 {

namespace {

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

int gapOf(LineSource& line, const std::vector<RecipeEntry>& entries)
{
    const LineOptions& options = line.options();
    if (options.gap)
        requireUntornValues(line.library(), itemsOf(entries), *options.gap);
    return options.singleReadGap();
}

} // namespace

std::vector<Item> itemsOf(const std::vector<RecipeEntry>& entries)
{
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const RecipeEntry& entry : entries)
        items.push_back(entry.item);
    return items;
}

std::string textOf(const Item& item, const std::vector<unsigned char>& data, std::size_t index)
{
    const Address value = valueOf(item.address, static_cast<int>(index));
    const std::size_t from = index * static_cast<std::size_t>(byteCount(value));
    return withUnit(valueTexts(value, item.format, data.data() + from).front(), item.format);
}

bool isSameValue(const Item& item, const std::vector<unsigned char>& a,
                 const std::vector<unsigned char>& b, std::size_t index)
{
    const auto size = static_cast<std::ptrdiff_t>(byteCount(valueOf(item.address, 0)));
    const auto first = static_cast<std::ptrdiff_t>(index) * size;
    return std::equal(a.begin() + first, a.begin() + first + size, b.begin() + first);
}

RecipeRun::RecipeRun(LineSource& line, const std::vector<RecipeEntry>& entries, bool json)
    : entries_(entries), labels_(labelViews(line.library(), itemsOf(entries))), isJson_(json),
      live_(line.take(itemsOf(entries), gapOf(line, entries))),
      job_(live_.session(), [this]() { next(); })
{
    live_.endWithoutPort();
    if (isJson_)
        live_.countInJson();
    live_.open();
}

bool RecipeRun::upload()
{
    job_.upload(entries_);
    live_.run();
    return isMoved("read; the file is as it was");
}

bool RecipeRun::download()
{
    goesOn_ = true;
    job_.download(entries_);
    live_.run();
    return isMoved("written");
}

void RecipeRun::readBack()
{
    job_.readBack(entries_);
    live_.run();
}

std::string RecipeRun::unread(std::size_t entry) const
{
    return entry < job_.readings().size() ? job_.readings().at(entry).problem
                                          : live_.interruption();
}

OutputJson RecipeRun::entryJson(const Library& library, std::size_t entry, bool& isSame) const
{
    const RecipeEntry& own = entries_.at(entry);
    OutputJson object = itemJson(library, own.item);
    addValues(object, "recipe", own.item, own.data);
    isSame = unread(entry).empty() && own.data == job_.readings().at(entry).data;
    if (!unread(entry).empty()) {
        const bool isRead = entry < job_.readings().size();
        addReason(object, "failure", unread(entry),
                  isRead ? job_.readings().at(entry).why : std::string());
        return object;
    }
    addValues(object, "controller", own.item, job_.readings().at(entry).data);
    object["same"] = isSame;
    return object;
}

std::size_t RecipeRun::valuesOf(std::size_t entry) const
{
    return static_cast<std::size_t>(valueCount(entries_.at(entry).item.address));
}

void RecipeRun::next()
{
    isMoved_ = isMoved_ || job_.problems().empty();
    if (goesOn_ && isMoved_) {
        goesOn_ = false;
        job_.readBack();
    } else {
        live_.end();
    }
}

bool RecipeRun::isMoved(const char* done) const
{
    if (isMoved_)
        return true;
    std::vector<std::string> problems = job_.problems();
    if (problems.empty())
        problems.push_back(live_.interruption());
    if (isJson_) {
        OutputJson object = {{"problems", problems},
                             {"progress", progressText(job_.progress(), done)}};
        if (!job_.why().empty())
            object["why"] = job_.why();
        sayJson(object);
    }
    for (const std::string& problem : problems)
        std::fprintf(stderr, "dov417: recipe not transferred: %s\n", problem.c_str());
    std::fprintf(stderr, "dov417: %s\n", progressText(job_.progress(), done).c_str());
    return false;
}

} // namespace dov417
