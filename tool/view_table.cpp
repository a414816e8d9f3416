#include "tool/view_table.h"

#include <algorithm>
#include <cstdio>

#include "text/address_values.h"
#include "tool/screen_lines.h"
#include "tool/troubles.h"

namespace dov417 {

namespace {

std::string ageText(const View& view, Clock::time_point now)
{
    if (!view.hasValue)
        return "never";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s",
                  std::chrono::duration<double>(now - view.lastGood).count());
    return text;
}

bool areNamed(const std::vector<ViewLabel>& labels)
{
    return std::any_of(labels.begin(), labels.end(),
                       [](const ViewLabel& label) { return label.name != label.address; });
}

} // namespace

std::vector<std::string> cachedTexts(const Session& session, const Item& item)
{
    return valueTexts(item.address, item.format, session.cachedBytes(item.address).data());
}

const char* qualityText(Quality quality)
{
    switch (quality) {
    case Quality::neverRead:
        return "never read";
    case Quality::good:
        return "";
    case Quality::old:
        return "old";
    case Quality::beingWritten:
        return "being written";
    }
    return "";
}

std::vector<std::string> doubtfulValues(const std::vector<View>& views,
                                        const std::vector<Item>& items,
                                        const std::vector<ViewLabel>& labels)
{
    const auto wrongWith = [&views](std::size_t index) -> std::string {
        const Quality quality = views.at(index).quality();
        return quality == Quality::good        ? ""
               : quality == Quality::neverRead ? "no value came"
               : quality == Quality::old       ? "the value is old"
                                               : "the value is being written";
    };
    std::vector<std::pair<std::string, std::string>> wrong;
    std::size_t first = 0;
    for (const Item& item : items) {
        const std::size_t end = first + static_cast<std::size_t>(valueCount(item.address));
        bool areAlike = true;
        for (std::size_t i = first; i < end; ++i)
            areAlike = areAlike && wrongWith(i) == wrongWith(first);
        for (std::size_t i = first; i < (areAlike ? first + 1 : end); ++i)
            if (!wrongWith(i).empty())
                wrong.emplace_back(areAlike ? item.name : labels.at(i).name, wrongWith(i));
        first = end;
    }
    return grouped(wrong);
}

std::vector<std::string> aligned(const std::vector<Row>& rows, std::size_t textColumns)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c)
            widths.at(c) = std::max(widths.at(c), lengthOf(row.at(c)));
    std::vector<std::string> lines;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t c = 0; c < row.size(); ++c) {
            const std::string padding(widths.at(c) - lengthOf(row.at(c)), ' ');
            line += c == 0 ? "" : "  ";
            line += c >= textColumns ? padding + row.at(c) : row.at(c);
            if (c < textColumns && c + 1 < row.size())
                line += padding;
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<Row> viewRows(const std::vector<View>& views, const std::vector<ViewLabel>& labels,
                          Clock::time_point now)
{
    const bool named = areNamed(labels);
    std::vector<Row> rows = {{"address", "value", "quality", "previous", "age", "changes"}};
    for (std::size_t i = 0; i < views.size(); ++i)
        rows.push_back({labels.at(i).address, shownText(views.at(i), labels.at(i)),
                        qualityText(views.at(i).quality()),
                        shownPreviousText(views.at(i), labels.at(i)), ageText(views.at(i), now),
                        std::to_string(views.at(i).changes)});
    if (named) {
        rows.front().insert(rows.front().begin(), "name");
        for (std::size_t i = 0; i < views.size(); ++i)
            rows.at(i + 1).insert(rows.at(i + 1).begin(), labels.at(i).name);
    }
    return rows;
}

std::vector<std::string> viewTable(const std::vector<View>& views,
                                   const std::vector<ViewLabel>& labels, Clock::time_point now)
{
    return aligned(viewRows(views, labels, now), areNamed(labels) ? 2 : 1);
}

} // namespace dov417
