#include "panel/recipes/recipe_table.h"

#include <algorithm>

#include "session/recipe_wishes.h"
#include "text/address_values.h"

namespace dov417 {

namespace {

RecipeKey keyOf(const RecipeRow& row)
{
    return {row.value.address, row.value.label.name};
}

void forgetControllerOf(RecipeRow& row)
{
    row.controller.clear();
    row.isCurrent = false;
    if (row.fate != RecipeFate::waiting)
        row.fate = RecipeFate::none;
}

} // namespace

RecipeTable::RecipeTable(const Library& library) : library_(library) {}

// ---- what there is --------------------------------------------------------------------------

void RecipeTable::addRow(const PanelValue& value)
{
    places_.emplace(value.address, rows_.size());
    rows_.emplace_back();
    rows_.back().value = value;
}

RecipeRow* RecipeTable::find(const RecipeKey& key)
{
    const auto [first, last] = places_.equal_range(key.address);
    const auto place = std::find_if(first, last, [this, &key](const auto& each) {
        return rows_.at(each.second).value.label.name == key.name;
    });
    return place == last ? nullptr : &rows_.at(place->second);
}

RecipeRow* RecipeTable::take(const RecipeKey& key, TakenRows& taken, const Format* format)
{
    std::size_t found = rows_.size();
    const auto [first, last] = places_.equal_range(key.address);
    for (auto place = first; place != last; ++place) {
        const std::size_t row = place->second;
        const ViewLabel& label = rows_.at(row).value.label;
        if (!taken.at(row) && label.name == key.name && (!format || label.format == *format))
            found = std::min(found, row);
    }
    if (found == rows_.size())
        return nullptr;
    taken.at(found) = true;
    return &rows_.at(found);
}

void RecipeTable::setTags(const PanelTags& tags)
{
    std::vector<RecipeRow> before;
    before.swap(rows_);
    before.insert(before.end(), parked_.begin(), parked_.end());
    parked_.clear();
    places_.clear();
    rows_.reserve(tags.values.size());
    places_.reserve(tags.values.size());
    for (const PanelValue& value : tags.values)
        addRow(value);
    // In another format, too, but first to whom it was shown in the same.
    TakenRows taken(rows_.size());
    std::vector<RecipeRow*> same;
    same.reserve(before.size());
    for (const RecipeRow& row : before)
        same.push_back(take(keyOf(row), taken, &row.value.label.format));
    for (std::size_t i = 0; i < before.size(); ++i)
        if (!same.at(i))
            same.at(i) = take(keyOf(before.at(i)), taken);
    std::vector<RecipeRow> ofFile;
    for (std::size_t i = 0; i < before.size(); ++i) {
        RecipeRow& row = before.at(i);
        if (same.at(i)) {
            row.value = same.at(i)->value;
            row.isOfFile = false;
            *same.at(i) = std::move(row);
        } else if (row.isOfFile) {
            ofFile.push_back(std::move(row));
        } else if (!row.file.empty() || !row.buffer.empty()) {
            RecipeRow parked;
            parked.value = row.value;
            parked.file = row.file;
            parked.buffer = row.buffer;
            parked.upload = row.upload;
            parked_.push_back(parked);
        }
    }
    for (RecipeRow& row : ofFile) {
        addRow(row.value);
        rows_.back() = std::move(row);
    }
}

void RecipeTable::clear()
{
    parked_.clear();
    // They stand behind all others.
    while (!rows_.empty() && rows_.back().isOfFile)
        rows_.pop_back();
    for (auto place = places_.begin(); place != places_.end();)
        place = place->second < rows_.size() ? std::next(place) : places_.erase(place);
    for (RecipeRow& row : rows_) {
        row.file.clear();
        row.buffer.clear();
        row.upload = 0;
        row.fate = RecipeFate::none;
    }
}

void RecipeTable::forgetController()
{
    for (RecipeRow& row : rows_)
        forgetControllerOf(row);
    uploadsBefore_ = uploads_; // what comes from now on says nothing of them
}

void RecipeTable::doubt()
{
    for (int upload = uploadsBefore_ + 1; upload <= uploads_; ++upload)
        doubted_.insert(upload);
    for (RecipeRow& row : rows_) {
        forgetControllerOf(row);
        markDoubt(row);
    }
}

bool RecipeTable::isDoubtful(const RecipeRow& row) const
{
    return row.isInRecipe() && doubted_.count(row.upload) > 0;
}

void RecipeTable::markDoubt(RecipeRow& row) const
{
    if (!isDoubtful(row) || row.fate == RecipeFate::waiting)
        return;
    row.fate = RecipeFate::unknown;
    row.reason = doubtText();
}

std::string RecipeTable::doubtText()
{
    return tr("replies came twice, and this may be another value's: upload it again, or type it")
        .toStdString();
}

void RecipeTable::requireNoDoubt() const
{
    for (const std::vector<RecipeRow>* const rows : {&rows_, &parked_})
        for (const RecipeRow& row : *rows)
            if (isDoubtful(row))
                throw UsageFailure(row.value.label.name + ": " + doubtText());
}

void RecipeTable::look(const ValueBook& book)
{
    for (RecipeRow& row : rows_) {
        const View* const view = book.find(row.value.address);
        const ValueStanding standing = book.standing(row.value.address);
        row.isCurrent = view && !standing.isOld && standing.state != ValueState::neverRead &&
                        standing.state != ValueState::old;
        if (!view || view->lastGood < row.readAt)
            continue;
        // What is old is shown, too, as on the page of values, where nothing later is known.
        if (!row.isCurrent && !row.controller.empty() && view->lastGood == row.readAt)
            continue;
        row.controller = view->value;
        row.readAt = view->lastGood;
    }
}

bool RecipeTable::isAny() const
{
    return !parked_.empty() || std::any_of(rows_.begin(), rows_.end(), [](const RecipeRow& row) {
        return !row.file.empty() || !row.buffer.empty();
    });
}

std::size_t RecipeTable::valuesInRecipe() const
{
    return static_cast<std::size_t>(std::count_if(
        rows_.begin(), rows_.end(), [](const RecipeRow& row) { return row.isInRecipe(); }));
}

void RecipeTable::edit(std::size_t row, const std::string& text)
{
    RecipeRow& edited = rows_.at(row);
    const ValueBytes bytes = text.empty() ? ValueBytes() : bytesToWrite(edited.value, text);
    if (bytes == edited.buffer && !isDoubtful(edited))
        return;
    edited.buffer = bytes;
    edited.upload = 0;
    edited.fate = RecipeFate::none;
}

// ---- transfers ------------------------------------------------------------------------------

std::vector<RecipeShare> RecipeTable::shares(RecipeKind kind) const
{
    std::vector<RecipeShare> all = recipeShares(library_, rows_, kind);
    if (all.empty())
        throw UsageFailure((kind == RecipeKind::download ? tr("the buffer is empty")
                                                         : tr("there is nothing to read"))
                               .toStdString());
    if (kind == RecipeKind::download) {
        requireOneWish(entriesOf(all));
        requireBuffersWithinLimits(rows_);
        requireNoDoubt();
    }
    return all;
}

void RecipeTable::began(const std::vector<RecipeShare>& shares, RecipeKind kind)
{
    for (RecipeRow& row : rows_)
        row.fate = RecipeFate::none;
    TakenRows taken(rows_.size());
    for (const RecipeShare& share : shares)
        for (const RecipeKey& key : share.values)
            if (RecipeRow* const row = kind == RecipeKind::read ? nullptr : take(key, taken))
                row->fate = RecipeFate::waiting;
}

void RecipeTable::ended(const std::vector<RecipeShare>& shares, const RecipeNews& news,
                        bool isOfLine)
{
    const std::string why = !isOfLine ? tr("another line was opened meanwhile").toStdString()
                            : news.problems.empty() ? tr("it was not read").toStdString()
                                                    : news.problems.front();
    uploads_ += news.kind == RecipeKind::upload ? 1 : 0;
    std::size_t place = 0;
    TakenRows taken(rows_.size());
    for (const RecipeShare& share : shares) {
        RecipeReading reading{{}, why};
        Clock::time_point asOf = news.asOf;
        if (isOfLine && place < news.readings.size())
            reading = news.readings.at(place);
        if (place < news.asOfEach.size())
            asOf = news.asOfEach.at(place);
        ++place;
        std::size_t index = 0;
        for (const RecipeKey& key : share.values) {
            RecipeRow* const row = take(key, taken);
            const std::size_t value = index++;
            if (!row)
                continue;                                           // nobody watches it any more
            const bool isEdited = row->fate != RecipeFate::waiting; // meanwhile
            row->reason = reading.problem;
            row->fate = RecipeFate::unknown;
            if (!reading.problem.empty())
                continue;
            const Address& address = share.entry.item.address;
            row->controller = sliceOf(reading.data, address, value);
            row->readAt = asOf;
            row->fate = RecipeFate::read;
            if (news.kind == RecipeKind::upload && !isEdited) {
                row->buffer = row->controller;
                row->upload = uploads_;
            }
            if (news.kind == RecipeKind::download) {
                const bool isHeld = row->controller == sliceOf(share.entry.data, address, value);
                row->fate = news.isCancelled ? isHeld ? RecipeFate::held : RecipeFate::notHeld
                            : isHeld         ? RecipeFate::written
                                             : RecipeFate::different;
            }
        }
    }
}

std::string recipeText(const RecipeRow& row, const ValueBytes& bytes)
{
    if (bytes.empty())
        return std::string();
    const Format& format = row.value.label.format;
    return withUnit(valueTexts(row.value.address, format, bytes.data()).front(), format);
}

} // namespace dov417
