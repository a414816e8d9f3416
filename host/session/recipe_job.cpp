#include "session/recipe_job.h"

#include <utility>

namespace dov417 {

namespace {

constexpr int bitsPerWord = 16;

bool isBits(const RecipeEntry& entry)
{
    return entry.item.address.width == Width::bit;
}

} // namespace

RecipeJob::RecipeJob(Session& session, int gap, std::function<void()> done)
    : session_(session), gap_(gap), done_(std::move(done))
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

void RecipeJob::upload(const std::vector<RecipeEntry>& entries)
{
    entries_ = entries;
    problems_.clear();
    transfer_ = RecipeTransfer::upload;
    std::vector<Address> words;
    for (const RecipeEntry& entry : entries_)
        words.push_back(isBits(entry) ? wordsOf(entry.item.address) : entry.item.address);
    layout_ = layOutRecipe(words);
    session_.transferRecipe(layout_, transfer_);
}

void RecipeJob::download(const std::vector<RecipeEntry>& entries)
{
    entries_ = entries;
    problems_.clear();
    transfer_ = RecipeTransfer::download;
    std::vector<Address> words;
    for (const RecipeEntry& entry : entries_)
        if (!isBits(entry))
            words.push_back(entry.item.address);
    layout_ = layOutRecipe(words);
    wordsToBuffer();
    session_.transferRecipe(layout_, transfer_);
}

void RecipeJob::wordsToBuffer()
{
    for (const RecipeEntry& entry : entries_) {
        if (isBits(entry))
            continue;
        Address word = entry.item.address;
        for (std::size_t i = 0; i < entry.data.size() / 2; ++i, ++word.first)
            session_.recipeBuffer().at(layout_.offsetOf(word)) =
                static_cast<std::uint16_t>(entry.data.at(2 * i) | entry.data.at(2 * i + 1) << 8);
    }
}

void RecipeJob::bufferToEntries()
{
    for (RecipeEntry& entry : entries_) {
        const Address& address = entry.item.address;
        const Address words = isBits(entry) ? wordsOf(address) : address;
        entry.data.clear();
        for (int unit = 0; unit < address.length; ++unit) {
            const int bit = address.first + unit;
            Address word = words;
            word.first = isBits(entry) ? bit / bitsPerWord : address.first + unit;
            const unsigned value = session_.recipeBuffer().at(layout_.offsetOf(word));
            if (isBits(entry)) {
                entry.data.push_back(value >> bit % bitsPerWord & 1);
            } else {
                entry.data.push_back(value & 0xFF);
                entry.data.push_back(static_cast<unsigned char>(value >> 8));
            }
        }
    }
}

void RecipeJob::ended(bool accepted, const std::string& reason)
{
    if (!accepted)
        problems_.push_back(reason);
    if (transfer_ == RecipeTransfer::upload) {
        if (accepted)
            bufferToEntries();
        done_();
        return;
    }
    if (accepted)
        writeBits();
    if (bitsUnderWay_.empty())
        done_();
}

void RecipeJob::writeBits()
{
    for (const RecipeEntry& entry : entries_)
        if (isBits(entry))
            for (const Write& bit : writePieces(entry.item.address, entry.data, gap_))
                bitsUnderWay_.emplace(session_.write(bit), entry.item.name);
}

void RecipeJob::written(int number, bool accepted, const std::string& reason)
{
    const auto found = bitsUnderWay_.find(number);
    if (found == bitsUnderWay_.end())
        return;
    if (!accepted)
        problems_.push_back(found->second + ": " + reason);
    bitsUnderWay_.erase(found);
    if (bitsUnderWay_.empty())
        done_();
}

} // namespace dov417
