#include "panel/project/project_tags.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "driver/registers.h"

namespace dov417 {

namespace {

bool isWrittenSo(const Format& format, const std::string& text)
{
    return formatText(format) == text;
}

// Scale and limits are those of the tag's own format.
bool hasMeaning(const Item& item)
{
    return item.limits.min || item.limits.max || !item.ofLimits.scaling.isPlain();
}

bool isSameTag(const Item& a, const Item& b)
{
    const auto parts = [](const Item& item) {
        return std::tie(item.name, item.comment, item.limits.min, item.limits.max);
    };
    return parts(a) == parts(b) && a.address == b.address && a.ofLimits == b.ofLimits;
}

std::string numberText(double number)
{
    return OrderedJson(number).dump();
}

// What cannot stand in a file, or not in a name.
std::string cleaned(const std::string& text, const std::string& unwanted)
{
    std::string clean = QString::fromStdString(text).toStdString(); // UTF-8
    for (char& each : clean)
        if (unwanted.find(each) != std::string::npos ||
            (!unwanted.empty() && (static_cast<unsigned char>(each) < ' ' || each == '\x7F')))
            each = '_';
    return clean;
}

TagTexts textsOf(const Library& library, const Item& item, const Format& own)
{
    const Address& address = item.address;
    const Scaling& scaling = item.ofLimits.scaling;
    TagTexts texts;
    texts[nameColumn] = item.name;
    if (address.station != 1)
        texts[stationColumn] = std::to_string(address.station);
    texts[registerColumn] = address.regName;
    texts[addressColumn] = addressText(library, address.regName, address.first);
    const int count = address.width == Width::text ? address.length : valueCount(address);
    if (count != 1)
        texts[countColumn] = std::to_string(count);
    if (!isWrittenSo(Format(), formatText(own)))
        texts[formatColumn] = formatText(own);
    texts[commentColumn] = cleaned(item.comment, "");
    texts[unitColumn] = cleaned(scaling.unit, "\n");
    if (scaling.scale != 1)
        texts[scaleColumn] = numberText(scaling.scale);
    if (scaling.offset != 0)
        texts[offsetColumn] = numberText(scaling.offset);
    if (scaling.decimals >= 0)
        texts[decimalsColumn] = std::to_string(scaling.decimals);
    if (item.limits.min)
        texts[minColumn] = numberText(*item.limits.min);
    if (item.limits.max)
        texts[maxColumn] = numberText(*item.limits.max);
    return texts;
}

// Would the tag be this item?
bool say(const Library& library, const TagTexts& texts, const Item& item)
{
    TagColumn column = nameColumn;
    try {
        const Tag tag = tagOf(library, texts, column);
        Format read = item.ofLimits;
        read.scaling = tag.scaling;
        Format meant = item.ofLimits;
        meant.scaling.unit = texts[unitColumn];
        return tag.address == item.address && read == meant && tag.limits.min == item.limits.min &&
               tag.limits.max == item.limits.max;
    } catch (const UsageFailure&) {
        return false;
    }
}

// The format in which its tag is written, and the tag's texts.
std::pair<Format, TagTexts> ownTexts(const Library& library, const Item& item)
{
    Format fourWords;
    fourWords.notation = Notation::uint64; // hex alone would not say so
    for (const Format& own : {hasMeaning(item) ? item.ofLimits : item.format, fourWords}) {
        const TagTexts texts = textsOf(library, item, own);
        if (say(library, texts, item))
            return {own, texts};
    }
    throw Failure(
        QCoreApplication::translate("ProjectTags", "%1 cannot be written as a tag of a project")
            .arg(QString::fromStdString(item.name))
            .toStdString());
}

class TagWriter {
public:
    TagWriter(const Library& library, const KnownTags& known) : library_(library), known_(known)
    {
        for (std::size_t i = 0; i < known.items.size(); ++i)
            places_.emplace(known.items[i].name, i);
    }

    TagsToWrite write(const std::vector<Item>& items)
    {
        if (known_.areInTagFile && areKnown(items)) {
            result_.areInTagFile = true;
            for (std::size_t i = 0; i < items.size(); ++i)
                choose(items[i].name, items[i].format, known_.items[i].format);
            return result_;
        }
        std::vector<bool> stays;
        for (const Item& item : items) {
            const bool isAsItWas = !known_.areInTagFile && staysAsItWas(item);
            // An address watched twice is one tag and another.
            stays.push_back(isAsItWas && names_.insert(fileName(item)).second);
        }
        for (std::size_t i = 0; i < items.size(); ++i)
            if (stays[i])
                keep(items[i]);
            else
                make(items[i]);
        return result_;
    }

private:
    bool areKnown(const std::vector<Item>& items) const
    {
        return std::equal(items.begin(), items.end(), known_.items.begin(), known_.items.end(),
                          isSameTag);
    }
    bool staysAsItWas(const Item& item) const
    {
        const auto place = places_.find(item.name);
        if (place == places_.end())
            return false;
        const Item& before = known_.items[place->second];
        return isSameTag(item, before) && (item.format == before.format || hasMeaning(item));
    }

    std::string fileName(const Item& item) const
    {
        const bool isTyped = item.name.empty() || item.name == toText(library_, item.address);
        return isTyped ? nameOfAddress(library_, item.address) : cleaned(item.name, "=:,");
    }

    void choose(const std::string& name, const Format& shown, const Format& own)
    {
        if (!isWrittenSo(shown, formatText(own)))
            result_.formats[name] = formatText(shown);
    }

    void keep(const Item& item)
    {
        const std::size_t place = places_.at(item.name);
        result_.tags.push_back(known_.tags[place]);
        choose(known_.tags[place].texts[nameColumn], item.format, known_.items[place].format);
    }

    void make(const Item& item)
    {
        Item named = item;
        named.name = fileName(item);
        for (int i = 2; !names_.insert(named.name).second; ++i)
            named.name = fileName(item) + "_" + std::to_string(i);
        const auto [own, texts] = ownTexts(library_, named);
        JsonTag tag;
        tag.texts = texts;
        const auto place = places_.find(item.name);
        if (place != places_.end() && !known_.areInTagFile)
            tag.others = known_.tags[place->second].others;
        result_.tags.push_back(tag);
        choose(named.name, item.format, own);
    }

    const Library& library_;
    const KnownTags& known_;
    std::map<std::string, std::size_t> places_; // of what is known, by its name in the panel
    std::set<std::string> names_;               // of the tags that are written
    TagsToWrite result_;
};

void showIn(Item& item, const OrderedJson& wish)
{
    try {
        if (!wish.is_string() || wish.get<std::string>().empty())
            throw UsageFailure("the name of a format is needed");
        Format format = chosenFormat(parseFormat(wish.get<std::string>()), FormatChoice());
        requireFormat(item.address.width, format);
        format.scaling = isNumber(format.notation) ? item.ofLimits.scaling : Scaling();
        item.format = format;
    } catch (const UsageFailure& failure) {
        throw ShownFormatFailure(item.name, failure.what());
    }
}

} // namespace

std::string nameOfAddress(const Library& library, const Address& address)
{
    std::string name = toText(library, address);
    std::replace(name.begin(), name.end(), ':', '.');
    return name.compare(0, 2, "1/") == 0 ? name.substr(2) : name;
}

ItemsOfTags itemsOfTags(const Library& library, const std::vector<Tag>& tags,
                        const OrderedJson& formats)
{
    ItemsOfTags items;
    if (tags.empty())
        return items;
    items.own = Items(library, tags).tagged(Access::read);
    items.shown = items.own;
    for (std::size_t i = 0; i < items.own.size(); ++i) {
        Item& shown = items.shown[i];
        const auto wish = formats.find(shown.name);
        if (wish != formats.end())
            showIn(shown, *wish);
        if (shown.name == nameOfAddress(library, shown.address))
            items.own[i].name = shown.name = toText(library, shown.address);
    }
    return items;
}

TagsToWrite tagsOfItems(const Library& library, const std::vector<Item>& items,
                        const KnownTags& known)
{
    return TagWriter(library, known).write(items);
}

bool isSame(const Item& a, const Item& b)
{
    return isSameTag(a, b) && a.format == b.format;
}

} // namespace dov417
