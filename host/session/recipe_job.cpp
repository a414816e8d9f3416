#include "session/recipe_job.h"

#include <utility>

#include "line/frame_bytes.h"
#include "session/single_reads.h"

namespace dov417 {

namespace {

bool isBits(const RecipeEntry& entry)
{
    return entry.item.address.width == Width::bit;
}

} // namespace

RecipeJob::RecipeJob(Session& session, std::function<void()> done)
    : session_(session), done_(std::move(done))
{
}

const std::vector<RecipeEntry>& RecipeJob::entries() const
{
    return entries_;
}

const std::vector<std::string>& RecipeJob::problems() const
{
    return problems_;
}

const std::vector<RecipeReading>& RecipeJob::readings() const
{
    return readings_;
}

RecipeProgress RecipeJob::progress() const
{
    RecipeProgress progress;
    progress.words = session_.recipeWordsMoved();
    progress.allWords = layout_.bufferWords;
    progress.bits = bitsWritten_;
    for (const RecipeEntry& entry : entries_)
        if (isDownload_ && isBits(entry))
            progress.allBits += static_cast<std::size_t>(entry.item.address.length);
    return progress;
}

const std::string& RecipeJob::why() const
{
    return why_;
}

void RecipeJob::begin(const std::vector<RecipeEntry>& entries)
{
    entries_ = entries;
    problems_.clear();
    why_.clear();
}

void RecipeJob::add(const std::string& problem, const std::string& why)
{
    if (problems_.empty())
        why_ = why;
    problems_.push_back(problem);
}

void RecipeJob::readBack(const std::vector<RecipeEntry>& entries)
{
    begin(entries);
    readBack();
}

void RecipeJob::readBack()
{
    std::vector<Address> addresses;
    addresses.reserve(entries_.size());
    for (const RecipeEntry& entry : entries_)
        addresses.push_back(entry.item.address);
    readings_.clear();
    readAll(session_, addresses, [this](const ReadResults& results) {
        for (std::size_t i = 0; i < entries_.size(); ++i)
            readings_.push_back({results.at(i).accepted
                                     ? session_.cachedBytes(entries_.at(i).item.address)
                                     : std::vector<unsigned char>(),
                                 results.at(i).reason, results.at(i).why});
        done_();
    });
}

void RecipeJob::upload(const std::vector<RecipeEntry>& entries)
{
    begin(entries);
    isDownload_ = false;
    bitsWritten_ = 0;
    std::vector<Address> words;
    for (const RecipeEntry& entry : entries_)
        words.push_back(isBits(entry) ? wordsOf(entry.item.address) : entry.item.address);
    layout_ = layOutRecipe(words);
    session_.transferRecipe(layout_, RecipeDirection::upload, RecipeWords(),
                            [this](const Result& result, const RecipeWords& uploaded) {
                                if (result.accepted)
                                    takeWords(uploaded);
                                else
                                    add(result.reason, result.why);
                                done_();
                            });
}

void RecipeJob::download(const std::vector<RecipeEntry>& entries)
{
    begin(entries);
    isDownload_ = true;
    bitsWritten_ = 0;
    std::vector<Address> words;
    for (const RecipeEntry& entry : entries_)
        if (!isBits(entry))
            words.push_back(entry.item.address);
    layout_ = layOutRecipe(words);
    generation_ = session_.generation();
    session_.transferRecipe(layout_, RecipeDirection::download, wordsOfEntries(),
                            [this](const Result& result, const RecipeWords&) {
                                if (!result.accepted)
                                    add(result.reason, result.why);
                                else if (session_.generation() != generation_)
                                    add(changedMeanwhile);
                                else
                                    writeBits();
                                if (bitsUnderWay_ == 0)
                                    done_();
                            });
}

RecipeWords RecipeJob::wordsOfEntries() const
{
    RecipeWords words(layout_.bufferWords);
    for (const RecipeEntry& entry : entries_) {
        if (isBits(entry))
            continue;
        Address word = entry.item.address;
        for (std::size_t i = 0; i < entry.data.size() / 2; ++i, ++word.first)
            words.at(layout_.offsetOf(word)) =
                static_cast<std::uint16_t>(entry.data.at(2 * i) | entry.data.at(2 * i + 1) << 8);
    }
    return words;
}

void RecipeJob::takeWords(const RecipeWords& words)
{
    for (RecipeEntry& entry : entries_) {
        const Address& address = entry.item.address;
        Address word = isBits(entry) ? wordsOf(address) : address;
        entry.data.clear();
        for (int unit = 0; unit < address.length; ++unit) {
            const int bit = address.first + unit;
            word.first = isBits(entry) ? bit / bitsPerWord : address.first + unit;
            const unsigned value = words.at(layout_.offsetOf(word));
            if (isBits(entry)) {
                entry.data.push_back(value >> bit % bitsPerWord & 1);
            } else {
                entry.data.push_back(value & 0xFF);
                entry.data.push_back(static_cast<unsigned char>(value >> 8));
            }
        }
    }
}

void RecipeJob::writeBits()
{
    std::vector<std::pair<Write, std::string>> bits;
    for (const RecipeEntry& entry : entries_)
        if (isBits(entry))
            for (const Write& bit :
                 writePieces(entry.item.address, entry.data, session_.settings().gap))
                bits.emplace_back(bit, entry.item.name);
    bitsUnderWay_ = bits.size();
    for (const auto& [bit, name] : bits)
        session_.write(bit,
                       [this, name = name](const Result& result) { bitWritten(name, result); });
}

void RecipeJob::bitWritten(const std::string& name, const Result& result)
{
    const std::string problem = name + ": " + result.reason;
    // A tag of many bits has one problem.
    if (!result.reason.empty() &&
        std::find(problems_.begin(), problems_.end(), problem) == problems_.end())
        add(problem, result.why);
    if (result.accepted)
        ++bitsWritten_;
    if (--bitsUnderWay_ == 0)
        done_();
}

} // namespace dov417
