#include "session/recipe_transfer.h"

#include <algorithm>
#include <utility>

#include "session/driver_keys.h"
#include "session/pieces.h"

namespace dov417 {

namespace {

constexpr std::size_t blockSize = uploadFlagOffset + 1;
constexpr std::size_t bufferWords = 65536;

_RCP_VAR_PRO recordOf(const RecipeRecord& place)
{
    _RCP_VAR_PRO record = _RCP_VAR_PRO();
    record.linkId = driverTag;
    record.stationNo = place.address.station;
    record.regName = QString::fromStdString(place.address.regName);
    record.address = place.address.first;
    record.length = place.address.length;
    record.bufOffset = place.bufferOffset;
    return record;
}

} // namespace

RecipeTransfer::RecipeTransfer(const Library& library, Tellings& tellings)
    : library_(library), tellings_(tellings), block_(blockSize), buffer_(bufferWords)
{
}

unsigned char* RecipeTransfer::block()
{
    return block_.data();
}

unsigned short* RecipeTransfer::buffer()
{
    return buffer_.data();
}

QMutex* RecipeTransfer::mutex()
{
    return &blockMutex_;
}

void RecipeTransfer::start(const RecipeLayout& layout, RecipeDirection direction,
                           const RecipeWords& words, RecipeDone done)
{
    const Result refused = refusal(layout, direction);
    if (!refused.accepted) {
        tellings_.addDone(std::move(done), refused, RecipeWords());
        return;
    }
    done_ = std::move(done);
    wordsMoved_ = 0;
    wholeValues_ = layout.wholeValues;
    doubt_.clear();
    underWay_ = true;
    flag_ = direction == RecipeDirection::upload ? uploadFlagOffset : downloadFlagOffset;
    words_ = layout.bufferWords;
    std::fill(buffer_.begin(), buffer_.end(), static_cast<unsigned short>(0));
    std::copy_n(words.begin(), std::min(words.size(), buffer_.size()), buffer_.begin());
    rounds_.assign(layout.rounds.begin(), layout.rounds.end());
    if (rounds_.empty())
        tellEnd(Result()); // nothing to move
}

// The driver checks none of this. Of a longer record it would send the first words once more for
// those behind the longest request, and bits it would take from words.
Result RecipeTransfer::refusal(const RecipeLayout& layout, RecipeDirection direction) const
{
    if (underWay_)
        return Result::refused("another recipe is under way");
    if (layout.bufferWords > buffer_.size())
        return Result::refused("the recipe has " + std::to_string(layout.bufferWords) +
                               " words; the buffer holds " + std::to_string(buffer_.size()));
    for (const std::vector<RecipeRecord>& round : layout.rounds)
        for (const RecipeRecord& record : round) {
            const auto type = registerType(library_, record.address.regName);
            if (!type || type->width == Width::bit || record.address.width == Width::bit ||
                record.address.length > maxPlan)
                return Result::refused("a recipe record is of words, at most " +
                                       std::to_string(maxPlan));
            // Its words: a record may hold values of several widths, and parts of them.
            Result result =
                usable(library_, wordsOf(record.address),
                       direction == RecipeDirection::upload ? Access::read : Access::write);
            if (!result.accepted)
                return result;
            if (record.bufferOffset < 0 || record.address.length < 0 ||
                static_cast<std::size_t>(record.bufferOffset) +
                        static_cast<std::size_t>(record.address.length) >
                    layout.bufferWords)
                return Result::refused("a recipe record lies outside the buffer");
        }
    return Result();
}

bool RecipeTransfer::beginRound()
{
    if (moving_ || rounds_.empty())
        return false;
    QVector<_RCP_VAR_PRO> records;
    for (const RecipeRecord& place : rounds_.front())
        records.append(recordOf(place));
    // With the flag set and nothing to move the driver would repeat its last request for ever.
    if (library_.intf_setRcpAddress(records) == 0) {
        tellEnd(Result::refused("the driver took none of the recipe's addresses"));
        return false;
    }
    setFlag(true);
    moving_ = true;
    return true;
}

bool RecipeTransfer::isUnderWay() const
{
    return underWay_;
}

bool RecipeTransfer::isMoving() const
{
    return moving_;
}

std::size_t RecipeTransfer::wordsMoved() const
{
    return wordsMoved_;
}

bool RecipeTransfer::mayCut(const Request& request, int word) const
{
    return !wholeValues_.goOn(request.station, request.regName, word);
}

void RecipeTransfer::settle(const Transmission& transmission)
{
    if (transmission.verdict == replyAccepted)
        wordsMoved_ += static_cast<std::size_t>(transmission.request.length);
    if (flagIsSet())
        return;
    moving_ = false;
    if (transmission.verdict != replyAccepted) {
        tellEnd(
            {false, transmission.description + ": " + transmission.reason, whyOf(transmission)});
        return;
    }
    rounds_.pop_front();
    if (rounds_.empty())
        tellEnd(Result());
}

void RecipeTransfer::doubt(const std::string& reason)
{
    if (underWay_ && flag_ == uploadFlagOffset)
        doubt_ = reason;
}

void RecipeTransfer::end(const std::string& reason)
{
    setFlag(false);
    moving_ = false;
    if (underWay_)
        tellEnd(Result::refused(reason));
}

bool RecipeTransfer::flagIsSet()
{
    const QMutexLocker lock(&blockMutex_);
    return block_.at(flag_) != 0;
}

void RecipeTransfer::setFlag(bool set)
{
    const QMutexLocker lock(&blockMutex_);
    block_.at(flag_) = set ? 1 : 0;
}

void RecipeTransfer::tellEnd(const Result& result)
{
    rounds_.clear();
    underWay_ = false;
    const RecipeWords words(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(words_));
    tellings_.addDone(done_, result.accepted && !doubt_.empty() ? Result::refused(doubt_) : result,
                      words);
    done_ = nullptr;
}

} // namespace dov417
