#include "text/tags.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>

#include "text/csv_rows.h"
#include "text/json_tags.h"
#include "text/nearest_name.h"
#include "text/tag_columns.h"
#include "text/tag_names.h"
#include "text/text_file.h"
#include "text/wildcards.h"

namespace dov417 {

namespace {

// Which field of a row holds which column; -1: the file has no such column.
class Header {
public:
    Header(const Row& row, const Place& place, bool mayHaveCommas)
        : names_(row.fields), mayHaveCommas_(mayHaveCommas)
    {
        places_.fill(-1);
        for (std::size_t i = 0; i < row.fields.size(); ++i) {
            int column = 0;
            while (column < tagColumnCount &&
                   inLowerCase(row.fields[i]) != tagColumnNames[std::size_t(column)])
                ++column;
            if (column == tagColumnCount) {
                others_.push_back(i);
                continue;
            }
            if (places_[std::size_t(column)] >= 0)
                place.refuse(i + 1, row.fields[i], "the column is there twice");
            places_[std::size_t(column)] = static_cast<int>(i);
        }
        for (const TagColumn needed : neededTagColumns)
            if (places_[needed] < 0)
                place.refuse(std::string("the header lacks the column ") + tagColumnNames[needed]);
        // Without its scale a value would be shown, and written, as another than the machine's.
        for (const std::size_t other : others_)
            if (const char* const meant = misspelt(names_[other], tagColumnNames))
                place.refuse(other + 1, names_[other],
                             std::string("no column of a tag; did you mean ") + meant + "?");
    }

    // Columns that somebody else has a use for; empty where there are none.
    std::string others() const
    {
        std::string text;
        for (const std::size_t other : others_)
            if (!names_[other].empty())
                text += (text.empty() ? "" : ", ") + std::to_string(other + 1) + " (" +
                        names_[other] + ")";
        return text;
    }

    std::string text(const Row& row, TagColumn column) const
    {
        const int at = places_[column];
        std::string text = at >= 0 && std::size_t(at) < row.fields.size()
                               ? row.fields[std::size_t(at)]
                               : std::string();
        const std::size_t comma = text.find(',');
        if (mayHaveCommas_ && isNumber(column) && comma != std::string::npos)
            text[comma] = '.';
        return text;
    }
    std::string name(std::size_t field) const
    {
        return field < names_.size() ? names_[field] : std::string();
    }
    // What stands in the last field of a row is a text for people, or nobody's.
    bool endsInWords() const
    {
        const int last = static_cast<int>(names_.size()) - 1;
        return places_[commentColumn] == last ||
               std::find(places_.begin(), places_.end(), last) == places_.end();
    }
    std::size_t width() const
    {
        return names_.size();
    }
    [[noreturn]] void refuse(const Place& place, TagColumn column, const std::string& why) const
    {
        if (places_[column] < 0)
            place.refuse(why);
        place.refuse(std::size_t(places_[column]) + 1, tagColumnNames[column], why);
    }

private:
    static bool isNumber(TagColumn column)
    {
        return column == scaleColumn || column == offsetColumn || column == minColumn ||
               column == maxColumn;
    }

    std::vector<std::string> names_;
    std::array<int, tagColumnCount> places_;
    std::vector<std::size_t> others_;
    bool mayHaveCommas_; // for the points of numbers: not where a comma ends a field
};

// The tag of a row.
Tag tagIn(const Library& library, const Header& header, const Row& row, const Place& place)
{
    TagTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts.at(i) = header.text(row, static_cast<TagColumn>(i));
    TagColumn column = nameColumn;
    try {
        Tag tag = tagOf(library, texts, column);
        tag.line = row.line;
        return tag;
    } catch (const UsageFailure& failure) {
        header.refuse(place, column, failure.what());
    }
}

bool isEmpty(const Row& row)
{
    for (const std::string& field : row.fields)
        if (!field.empty())
            return false;
    return true;
}

// Names go into JSON, which takes nothing else.
void requireUtf8(const Row& row, const Header& header, const Place& place)
{
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
        const std::string& field = row.fields[i];
        if (QString::fromStdString(field).toStdString() != field)
            place.refuse(i + 1, header.name(i),
                         "bytes that are no UTF-8; save the file with that encoding");
    }
}

// As a CSV header never begins.
bool isJsonObject(const std::string& text)
{
    const std::size_t first = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return first != std::string::npos && text[first] == '{';
}

} // namespace

std::vector<Tag> readTags(const Library& library, const std::string& file, const Remark& remark)
{
    const std::string text = contentOf(file, "the tag file " + file);
    if (!isJsonObject(text))
        return parseTags(library, text, file, remark);
    const PlacedJson project(text, file);
    if (!project.root().contains(tagsMember))
        project.refuse(std::string(), "there are no tags in it");
    if (remark && isNewer(project))
        remark(newerSentence(project));
    return tagsOf(library, jsonTags(project), &project);
}

std::vector<Tag> parseTags(const Library& library, const std::string& text, const std::string& file,
                           const Remark& remark)
{
    const CsvRows csv = csvRows(text, file);
    const std::vector<Row>& rows = csv.rows;
    if (rows.empty())
        Place{file, 1}.refuse("the header is missing: name,station,register,address,count,format,"
                              "comment");
    const Header header(rows.front(), Place{file, rows.front().line}, csv.delimiter != ',');
    if (const std::string others = header.others(); remark && !others.empty())
        remark(file + ":" + std::to_string(rows.front().line) +
               ": no columns of a tag, and not looked at: " + others);

    std::vector<Tag> tags;
    std::map<std::string, int> lineOfName;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const Row& row = rows[i];
        const Place place{file, row.line};
        if (isEmpty(row))
            continue;
        requireUtf8(row, header, place);
        if (row.fields.size() > header.width())
            place.refuse("column " + std::to_string(header.width() + 1) +
                         ": more fields than the header names");
        if (csv.mayBeCut && i + 1 == rows.size()) {
            if (row.fields.size() < header.width())
                place.refuse("the file ends in this line, before column " +
                             std::to_string(row.fields.size() + 1) + " (" +
                             header.name(row.fields.size()) + "); was it cut off?");
            if (remark && !header.endsInWords())
                remark(place.file + ":" + std::to_string(place.line) +
                       ": the file ends without a line end; if it was cut off, '" +
                       row.fields.back() + "' is not all of that value");
        }
        const Tag tag = tagIn(library, header, row, place);
        const auto [known, isNew] = lineOfName.emplace(tag.name, tag.line);
        if (!isNew)
            header.refuse(place, nameColumn,
                          "'" + tag.name + "' is already on line " + std::to_string(known->second));
        tags.push_back(tag);
    }
    if (const auto clash = clashOf(tags))
        header.refuse(Place{file, tags[clash->tag].line}, nameColumn, clash->why);
    return tags;
}

std::string limitText(double limit)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, limit).ptr);
}

std::vector<Tag> matchingTags(const std::vector<Tag>& tags, const std::string& wildcard)
{
    std::vector<Tag> matching;
    for (const Tag& tag : tags)
        if (isMatch(wildcard, tag.name))
            matching.push_back(tag);
    return matching;
}

const Tag* findTag(const std::vector<Tag>& tags, const std::string& name)
{
    for (const Tag& tag : tags)
        if (tag.name == name)
            return &tag;
    return nullptr;
}

} // namespace dov417
