#include "panel/recipes/recipe_copy.h"

#include <QByteArray>
#include <QCoreApplication>

#include "session/items.h"
#include "text/address_values.h"

namespace dov417 {

namespace {

struct RecipeCopyTexts {
    Q_DECLARE_TR_FUNCTIONS(RecipeCopyTexts)
};

// One value of the item, under its address.
Item oneValue(const Library& library, const PanelValue& value)
{
    Item one = value.item;
    one.address = value.address;
    // What is no tag is found by its address; one value of a tag has none of its own name.
    const bool isTagged = isTag(library, value.item);
    one.name = isTagged ? value.label.name : toText(library, one.address);
    return itemInFile(library, itemByAddress(library, one));
}

OrderedJson meaningOf(const Library& library, const PanelValue& value)
{
    if (!isTag(library, value.item))
        return OrderedJson::object();
    const Format& own = value.item->ofLimits;
    return {{"notation", notationNames().at(static_cast<std::size_t>(own.notation))},
            {"order", wordOrderNames().at(static_cast<std::size_t>(own.order))},
            {"byteOrder", wordOrderNames().at(static_cast<std::size_t>(own.byteOrder))},
            {"scale", own.scaling.scale},
            {"offset", own.scaling.offset},
            {"unit", own.scaling.unit}};
}

std::string textOf(const ValueBytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()))
        .toHex()
        .toStdString();
}

ValueBytes bytesOf(const std::string& text)
{
    const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(text));
    return {bytes.begin(), bytes.end()};
}

} // namespace

RecipeCopyValue copyOf(const Library& library, const RecipeRow& row, bool isDoubtful)
{
    return {row.value.label.name, oneValue(library, row.value).name, meaningOf(library, row.value),
            row.buffer, isDoubtful};
}

bool isOf(const Library& library, const RecipeCopyValue& value, const PanelValue& now)
{
    return value.name == now.label.name && value.address == oneValue(library, now).name &&
           value.meaning == meaningOf(library, now) &&
           value.bytes.size() == static_cast<std::size_t>(byteCount(now.address)) &&
           now.locked.empty();
}

PanelValue valueByAddress(const Library& library, const RecipeCopyValue& value)
{
    const Item item = Items(library, ItemSource()).find(value.address, Access::write);
    const PanelTags tags = panelTags(library, {item});
    const bool isOne =
        tags.values.size() == 1 &&
        value.bytes.size() == static_cast<std::size_t>(byteCount(tags.values.front().address));
    if (!isOne)
        throw UsageFailure(RecipeCopyTexts::tr("%1: what was kept is no value of it")
                               .arg(QString::fromStdString(value.address))
                               .toStdString());
    return tags.values.front();
}

OrderedJson toJson(const RecipeCopy& copy)
{
    OrderedJson values = OrderedJson::array();
    for (const RecipeCopyValue& value : copy.values)
        values.push_back({{"name", value.name},
                          {"address", value.address},
                          {"meaning", value.meaning},
                          {"bytes", textOf(value.bytes)},
                          {"inDoubt", value.isDoubtful}});
    return {{"file", copy.file}, {"fileHash", copy.fileHash}, {"values", values}};
}

RecipeCopy recipeCopy(const OrderedJson& json)
{
    RecipeCopy copy;
    try {
        copy.file = json.at("file").get<std::string>();
        copy.fileHash = json.at("fileHash").get<std::string>();
        for (const OrderedJson& value : json.at("values"))
            copy.values.push_back({value.at("name").get<std::string>(),
                                   value.at("address").get<std::string>(), value.at("meaning"),
                                   bytesOf(value.at("bytes").get<std::string>()),
                                   value.value("inDoubt", false)});
    } catch (const OrderedJson::exception&) {
        throw UsageFailure(
            RecipeCopyTexts::tr("what was kept of the recipe cannot be read").toStdString());
    }
    return copy;
}

} // namespace dov417
