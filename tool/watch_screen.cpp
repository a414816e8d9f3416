#include "tool/watch_screen.h"

#include <algorithm>
#include <utility>

#include "text/addresses.h"

namespace dov417 {

namespace {

constexpr std::size_t maxEntry = 200;
constexpr std::size_t farDown = 1U << 30; // lines
const char* const tooSmall = "the window is too small";

void removeLastCharacter(std::string& text)
{
    while (!text.empty()) {
        const auto last = static_cast<unsigned char>(text.back());
        text.pop_back();
        if ((last & 0xC0) != 0x80)
            return;
    }
}

// A line as it is copied may end with its end.
std::string withoutLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.pop_back();
    return text;
}

bool isPrintable(const std::string& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= ' ' && c != '\177'; });
}

} // namespace

WatchScreen::WatchScreen(const std::vector<ViewLabel>& labels, bool takesKeys, WatchWishes wishes)
    : labels_(labels), takesKeys_(takesKeys), wishes_(std::move(wishes))
{
    filter();
}

void WatchScreen::take(const std::vector<Key>& keys, const std::vector<View>& views,
                       const std::string& clock, bool afterPause)
{
    isAlone_ = afterPause && keys.size() == 1;
    for (const Key& key : keys) {
        message_.clear();
        take(key, views, clock);
    }
}

void WatchScreen::take(const Key& key, const std::vector<View>& views, const std::string& clock)
{
    if (field_ != Field::none)
        takeInField(key);
    else if (key.kind == KeyKind::text)
        takeCommand(key.text, views, clock);
    else if (key.kind == KeyKind::escape)
        goBack();
    else if (key.kind == KeyKind::pasted)
        message_ = "what was pasted is ignored: no field is open";
    else
        move(key);
}

void WatchScreen::takeCommand(const std::string& text, const std::vector<View>& views,
                              const std::string& clock)
{
    if (text == "q")
        wishes_.end();
    else if (text == "s")
        turnTo(Page::counters);
    else if (text == "?")
        turnTo(Page::keys);
    else if (text == " " && room_ > 0) // there are values
        still_ = still_ ? std::nullopt : std::optional<Still>({views, clock});
    else if (text == "/" || text == "w") {
        if (page_ != Page::values || room_ == 0)
            message_ = room_ == 0 ? tooSmall : "the values are not shown: first Esc";
        else if (text == "/")
            openField(Field::filter, filter_);
        else
            askForValue();
    }
}

// ---- fields -----------------------------------------------------------------------------------

void WatchScreen::openField(Field field, const std::string& entry)
{
    field_ = field;
    entry_ = entry;
}

void WatchScreen::askForValue()
{
    if (!cursor_) {
        message_ = "no line is under the cursor";
        return;
    }
    try {
        range_ = wishes_.range(*cursor_);
    } catch (const UsageFailure& failure) {
        message_ = failure.what();
        return;
    }
    target_ = *cursor_;
    outcome_.clear();
    openField(Field::value, std::string());
}

void WatchScreen::takeInField(const Key& key)
{
    const std::string text = key.kind == KeyKind::pasted ? withoutLineEnd(key.text) : key.text;
    switch (key.kind) {
    case KeyKind::text:
    case KeyKind::pasted:
        if (text.empty() || !isPrintable(text) || entry_.size() + text.size() > maxEntry)
            message_ = "what came is not one line that fits here: ignored";
        else
            entry_ += text;
        break;
    case KeyKind::backspace:
        removeLastCharacter(entry_);
        break;
    case KeyKind::clear:
        entry_.clear();
        break;
    case KeyKind::enter:
        confirmField();
        return;
    case KeyKind::escape:
        leaveField();
        return;
    default:
        return;
    }
    if (field_ == Field::filter) {
        filter_ = entry_;
        filter();
    }
}

void WatchScreen::confirmField()
{
    if (field_ == Field::value) {
        if (entry_.empty()) {
            message_ = "nothing is typed, and nothing was sent; \"\" is an empty text";
            return;
        }
        // A terminal may not mark what is pasted, and may hand it over in pieces: keys that come in
        // one burst are no person's confirmation.
        if (!isAlone_) {
            message_ = "this came as if pasted: Enter again sends it";
            return;
        }
        if (room_ == 0) {
            message_ = tooSmall;
            return;
        }
        try {
            wishes_.write(target_, entry_);
        } catch (const UsageFailure& failure) {
            message_ = std::string(failure.what()) + "; nothing was sent";
            return;
        }
    }
    field_ = Field::none;
}

void WatchScreen::leaveField()
{
    if (field_ == Field::filter) {
        filter_.clear();
        filter();
    } else {
        message_ = "nothing was sent";
    }
    field_ = Field::none;
}

void WatchScreen::showOutcome(const std::string& text)
{
    outcome_ = text;
}

// ---- what is shown ----------------------------------------------------------------------------

void WatchScreen::goBack()
{
    if (page_ != Page::values) {
        page_ = Page::values;
    } else if (!filter_.empty()) {
        filter_.clear();
        filter();
    } else {
        outcome_.clear();
    }
}

void WatchScreen::turnTo(Page page)
{
    page_ = page_ == page ? Page::values : page;
    pageTop_ = 0;
}

void WatchScreen::filter()
{
    const std::string wanted = inLowerCase(filter_);
    const auto has = [&wanted](const std::string& text) {
        return inLowerCase(text).find(wanted) != std::string::npos;
    };
    shown_.clear();
    for (std::size_t i = 0; i < labels_.size(); ++i)
        if (has(labels_.at(i).name) || has(labels_.at(i).address))
            shown_.push_back(i);
    // The cursor goes to the next line where its own is gone, or to the last.
    const std::size_t place = cursorPlace();
    if (shown_.empty())
        cursor_.reset();
    else
        cursor_ = shown_.at(std::min(place, shown_.size() - 1));
}

// Of the cursor among what is shown, or of what follows it.
std::size_t WatchScreen::cursorPlace() const
{
    const auto place = std::lower_bound(shown_.begin(), shown_.end(), cursor_.value_or(0));
    return static_cast<std::size_t>(place - shown_.begin());
}

void WatchScreen::move(const Key& key)
{
    const bool isPage = page_ != Page::values;
    if (shown_.empty() && !isPage)
        return;
    const std::size_t page = std::max<std::size_t>(1, room_);
    const std::size_t from = isPage ? pageTop_ : cursorPlace();
    const std::size_t last = isPage ? pageTop_ + page : shown_.size() - 1;
    std::size_t to = 0;
    switch (key.kind) {
    case KeyKind::up:
        to = from - std::min<std::size_t>(from, 1);
        break;
    case KeyKind::down:
        to = from + 1;
        break;
    case KeyKind::pageUp:
        to = from - std::min(from, page);
        break;
    case KeyKind::pageDown:
        to = from + page;
        break;
    case KeyKind::home:
        break;
    case KeyKind::end:
        to = isPage ? farDown : last;
        break;
    default:
        return;
    }
    if (isPage)
        pageTop_ = to; // its end is known once it is painted
    else
        cursor_ = shown_.at(std::min(to, last));
}

void WatchScreen::changed(const View& view, std::size_t index)
{
    doubtStill(view, index);
}

// A frozen row is shown as old once its value is, or is known no more.
void WatchScreen::doubtStill(const View& view, std::size_t index)
{
    if (still_ && (view.isOld || !view.hasValue))
        still_->views.at(index).isOld = true;
}

} // namespace dov417
