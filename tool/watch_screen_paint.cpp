// The lines of WatchScreen: a title, the values or another page, the counters, the foot.
#include <algorithm>
#include <array>
#include <cstdio>

#include "line/counted.h"
#include "tool/watch_screen.h"
#include "tool/watch_table.h"

namespace dov417 {

namespace {

constexpr std::size_t minColumns = 20;
constexpr std::size_t partOfMessages = 6; // of the rows
const char* const hint =
    "arrows move   / filter   w write   space still   s counters   ? keys   q end";

constexpr std::array<const char*, 15> keyLines = {
    "Up, Down, Page Up, Page Down, Home, End: move the cursor",
    "/       filter: lines whose name or address holds what is typed;",
    "        Enter keeps it, Esc shows all lines again",
    "w       write to the line under the cursor: Enter sends, Esc sends nothing",
    "space   stand still, and go on: the display only, the polling goes on",
    "s       the counters of the line and of each request, and back",
    "?       these keys, and back",
    "Esc     back; then without the filter; then without the last outcome",
    "q       end, as Ctrl-C does",
    "",
    "While the values stand still, their quality says \"still\", or \"old\" where",
    "they were old or their request has failed since; their age goes on.",
    "",
    "What is pasted is taken in an open field only, and Enter has to be pressed",
    "by hand."};

void append(std::vector<ScreenLine>& lines, const std::vector<std::string>& texts)
{
    for (const std::string& text : texts)
        lines.push_back({text});
}

std::size_t notGood(const std::vector<View>& views)
{
    return static_cast<std::size_t>(std::count_if(
        views.begin(), views.end(), [](const View& view) { return view.isOld || !view.hasValue; }));
}

// All of what is typed is seen before it is sent, however long it is.
std::vector<std::string> inPieces(const std::string& text, std::size_t columns)
{
    std::vector<std::string> pieces;
    for (std::string rest = text; !rest.empty(); rest.erase(0, pieces.back().size()))
        pieces.push_back(fitted(rest, std::max(columns, minColumns)));
    return pieces;
}

} // namespace

std::vector<ScreenLine> WatchScreen::paint(const ScreenSize& size, const WatchContent& content)
{
    if (still_)
        for (std::size_t i = 0; i < content.views.size(); ++i)
            doubtStill(content.views.at(i), i);
    std::vector<ScreenLine> below = foot(size, content);
    constexpr std::size_t others = 2; // the title, and the heading of the values
    if (below.size() + others >= size.rows)
        below.erase(below.begin(), below.end() - (field_ == Field::none ? 1 : 0));
    if (field_ != Field::none && below.empty())
        append(below, fieldLines(size.columns, content));
    std::vector<ScreenLine> lines;
    if (below.size() + others >= size.rows || size.columns < minColumns) {
        room_ = 0;
        lines = {{"the window is too small"}};
        lines.resize(size.rows);
    } else {
        room_ = size.rows - below.size() - others;
        const std::vector<ScreenLine> shown = middle(size, room_, content);
        lines = {{title(content), true}};
        lines.insert(lines.end(), shown.begin(), shown.end());
        lines.resize(size.rows - below.size());
        lines.insert(lines.end(), below.begin(), below.end());
    }
    for (ScreenLine& line : lines) {
        line.text = marked(line.text, size.columns);
        if (line.isReversed)
            line.text.append(size.columns - lengthOf(line.text), ' ');
    }
    return lines;
}

std::string WatchScreen::title(const WatchContent& content) const
{
    std::string text;
    if (still_)
        text = "STANDS STILL since " + still_->clock + ", polling goes on | ";
    if (!filter_.empty())
        text += "filter \"" + filter_ + "\": " + std::to_string(shown_.size()) + " of ";
    text += counted(labels_.size(), "value");
    const std::size_t bad = notGood(content.views);
    if (bad > 0)
        text += (filter_.empty() ? ", " : ", of all ") + std::to_string(bad) + " not good";
    if (page_ == Page::values && shown_.size() > room_)
        text += " | lines " + std::to_string(top_ + 1) + " to " +
                std::to_string(std::min(top_ + room_, shown_.size()));
    if (page_ != Page::values)
        text += page_ == Page::counters ? " | counters (s: back)" : " | keys (?: back)";
    return text;
}

std::vector<ScreenLine> WatchScreen::middle(const ScreenSize& size, std::size_t room,
                                            const WatchContent& content)
{
    if (page_ == Page::values)
        return values(size, room, content);
    const std::vector<std::string> all = wrapped(pageLines(content), size.columns);
    room_ = room + 1; // there is no heading
    pageTop_ = std::min(pageTop_, all.size() - std::min(all.size(), room_));
    std::vector<ScreenLine> lines;
    for (std::size_t i = pageTop_; i < std::min(all.size(), pageTop_ + room_); ++i)
        lines.push_back({all.at(i)});
    return lines;
}

std::vector<std::string> WatchScreen::pageLines(const WatchContent& content) const
{
    return page_ == Page::counters ? content.allCounters
                                   : std::vector<std::string>(keyLines.begin(), keyLines.end());
}

std::vector<ScreenLine> WatchScreen::values(const ScreenSize& size, std::size_t room,
                                            const WatchContent& content)
{
    const std::size_t cursor = cursorPlace();
    top_ = std::min(top_, shown_.size() - std::min(shown_.size(), room));
    if (!shown_.empty())
        top_ = std::clamp(top_, cursor + 1 - std::min(cursor + 1, room), cursor);

    std::vector<Row> rows = viewRows(still_ ? still_->views : content.views, labels_, content.now);
    const Row& headings = rows.front();
    const auto quality = static_cast<std::size_t>(
        std::find(headings.begin(), headings.end(), "quality") - headings.begin());
    for (std::size_t i = 0; still_ && i < still_->views.size(); ++i)
        if (still_->views.at(i).hasValue)
            rows.at(i + 1).at(quality) = still_->views.at(i).isOld ? "old" : "still";
    const std::vector<std::string> table = watchTable(rows, size.columns);

    std::vector<ScreenLine> lines = {{table.front()}};
    for (std::size_t place = top_; place < std::min(shown_.size(), top_ + room); ++place)
        lines.push_back(
            {table.at(shown_.at(place) + 1), takesKeys_ && shown_.at(place) == cursor_});
    return lines;
}

std::vector<ScreenLine> WatchScreen::foot(const ScreenSize& size, const WatchContent& content) const
{
    std::vector<ScreenLine> lines;
    append(lines, shortened(wrapped(content.messages, size.columns),
                            std::max<std::size_t>(1, size.rows / partOfMessages)));
    lines.insert(lines.begin(), {content.counters, true});
    std::vector<std::string> last;
    for (const std::string& text : {outcome_, message_})
        if (!text.empty())
            last.push_back(text);
    append(lines, wrapped(last, size.columns));
    if (field_ != Field::none)
        append(lines, fieldLines(size.columns, content));
    else if (takesKeys_)
        lines.push_back({hint});
    return lines;
}

std::vector<std::string> WatchScreen::fieldLines(std::size_t columns,
                                                 const WatchContent& content) const
{
    if (field_ == Field::filter)
        return inPieces("filter (Enter keeps it, Esc shows all lines): " + entry_ + "_", columns);
    const ViewLabel& label = labels_.at(target_);
    const View& view = content.views.at(target_);
    const std::string quality = qualityText(view.quality());
    const std::string what = "write " + label.name +
                             (label.name == label.address ? std::string() : ", " + label.address) +
                             ": now " + shownText(view, label) +
                             (quality.empty() ? "" : " (" + quality + ")") +
                             (range_.empty() ? "" : "; " + range_);
    std::vector<std::string> lines = wrapped({what}, columns);
    const std::string value = "new value (Enter sends it, Esc sends nothing): " + entry_ + "_";
    for (const std::string& piece : inPieces(value, columns))
        lines.push_back(piece);
    return lines;
}

} // namespace dov417
