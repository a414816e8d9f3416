#include "panel/desk/panel_tags.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <utility>

#include "driver/registers.h"
#include "panel/desk/line_batch.h"
#include "session/write_words.h"
#include "text/address_values.h"
#include "text/csv_rows.h"
#include "text/raw_values.h"
#include "text/tag_columns.h"

namespace dov417 {

namespace {

struct PanelTagTexts {
    Q_DECLARE_TR_FUNCTIONS(PanelTagTexts)
};

// Results of intf_multiCopy().
constexpr int seriesIsClipped = 2;

// What may be written is a matter of the register type, and asked once for each: the driver takes
// longer over it than over all else that is known of a tag.
std::string whyLocked(const Library& library, const Address& address,
                      std::unordered_set<std::string>& writable)
{
    if (writable.count(address.regName) > 0)
        return std::string();
    try {
        requireAccess(library, address, Access::write);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    writable.insert(address.regName);
    return std::string();
}

Item addressItem(const Library& library, const std::string& text)
{
    if (text.find(':') == std::string::npos && !registerType(library, text))
        throw UsageFailure(
            PanelTagTexts::tr("'%1' is no address, which is written R_W:100 or 2/M_bit:1.0..1.15")
                .arg(QString::fromStdString(text))
                .toStdString());
    return Items(library, ItemSource()).find(text, Access::read);
}

bool isAddress(const Library& library, const std::string& text, const Address& address)
{
    try {
        return addressItem(library, text).address == address;
    } catch (const UsageFailure&) {
        return false;
    }
}

// Of an address, or of a name and an address.
Item pastedItem(const Library& library, const std::vector<std::string>& fields)
{
    Item item = addressItem(library, fields.back());
    const std::string& name = fields.front();
    if (fields.size() == 1 || isAddress(library, name, item.address))
        return item;
    try {
        requireTagName(name);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(PanelTagTexts::tr("the name '%1' of %2: %3")
                               .arg(QString::fromStdString(name),
                                    QString::fromStdString(fields.back()),
                                    QString::fromUtf8(failure.what()))
                               .toStdString());
    }
    item.name = name;
    return item;
}

// "10 to 90 K, as unsigned"; empty without limits. They are told in their own notation, whatever
// the value is written in.
std::string limitedRange(const Item& item)
{
    const Limits& limits = item.limits;
    const auto number = [](double limit) { return QString::fromStdString(limitText(limit)); };
    if (!limits.min && !limits.max)
        return std::string();
    const QString range =
        !limits.max   ? PanelTagTexts::tr("from %1").arg(number(*limits.min))
        : !limits.min ? PanelTagTexts::tr("up to %1").arg(number(*limits.max))
                      : PanelTagTexts::tr("%1 to %2").arg(number(*limits.min), number(*limits.max));
    const std::string text = withUnit(range.toStdString(), item.ofLimits);
    const std::string notation = notationOfLimits(item);
    return notation.empty()
               ? text
               : PanelTagTexts::tr("%1, as %2")
                     .arg(QString::fromStdString(text), QString::fromStdString(notation))
                     .toStdString();
}

// Of its register type, of which a format may make one.
int ownValues(const Address& address)
{
    const bool isOfFour = address.width == Width::quadWord;
    return address.length / unitsOf(isOfFour ? Width::doubleWord : address.width);
}

} // namespace

PanelTags panelTags(const Library& library, const std::vector<Item>& items)
{
    PanelTags tags;
    tags.items = items;
    std::size_t values = 0;
    for (const Item& item : items)
        values += static_cast<std::size_t>(valueCount(item.address));
    tags.values.reserve(values);
    std::unordered_set<std::string> writable;
    std::vector<ViewLabel> labels; // of one item: there may be many thousands
    std::size_t place = 0;
    for (const Item& item : items) {
        const std::string locked = whyLocked(library, item.address, writable);
        const SharedItem shared(item);
        labels.clear();
        labelViews(library, item, labels);
        int i = 0;
        for (ViewLabel& label : labels)
            tags.values.push_back(
                {std::move(label), valueOf(item.address, i++), shared, place, locked});
        ++place;
    }
    return tags;
}

std::vector<Address> watchedAddresses(const std::vector<Item>& items)
{
    std::vector<Address> addresses;
    std::unordered_set<Address, AddressHash> known;
    for (const Item& item : items)
        if (known.insert(item.address).second)
            addresses.push_back(item.address);
    return addresses;
}

std::vector<unsigned char> bytesToWrite(const PanelValue& value, const std::string& text)
{
    if (!value.locked.empty())
        throw UsageFailure(value.locked);
    if (text.empty())
        throw UsageFailure(
            (value.address.width == Width::text
                 ? PanelTagTexts::tr("nothing is typed; an empty text is written \"\"")
                 : PanelTagTexts::tr("nothing is typed"))
                .toStdString());
    std::vector<unsigned char> bytes = valueBytes(value.address, value.label.format, {text});
    Item one = value.item;
    one.address = value.address;
    requireWithinLimits(one, bytes);
    return bytes;
}

std::string allowedRange(const PanelValue& value)
{
    Item item = value.item;
    item.format = value.label.format;
    const Format& format = item.format;
    const Limits& limits = item.limits;
    const bool isWhole = isNumber(format.notation) && !isFloating(format.notation);
    if ((limits.min && limits.max) || !notationOfLimits(item).empty() || !isWhole) {
        std::string range = limitedRange(item);
        if (!range.empty())
            return range;
    }
    if (value.address.width == Width::bit)
        return PanelTagTexts::tr("0 or 1").toStdString();
    if (!isWhole)
        return std::string();
    const int bits = bitsOf(value.address.width);
    const double low = isSigned(format.notation) ? -std::exp2(bits - 1) : 0;
    const double high = isSigned(format.notation)          ? std::exp2(bits - 1) - 1
                        : format.notation == Notation::bcd ? std::pow(10, bits / bitsPerDigit) - 1
                                                           : std::exp2(bits) - 1;
    const auto scaled = [&format](double raw) {
        return raw * format.scaling.scale + format.scaling.offset;
    };
    const auto [least, most] =
        std::minmax({scaled(low), scaled(high)}); // the scale may be negative
    item.limits = {limits.min.value_or(least), limits.max.value_or(most)};
    item.ofLimits = format;
    return limitedRange(item);
}

std::vector<Item> pastedItems(const Library& library, const std::string& text)
{
    const std::string named = PanelTagTexts::tr("what is pasted").toStdString();
    const std::vector<Row> rows = csvRows(text, named).rows;
    std::vector<Item> items;
    if (rows.empty())
        return items;
    const bool isTable =
        std::any_of(rows.begin(), rows.end(), [](const Row& row) { return row.fields.size() > 2; });
    if (isTable) {
        const std::vector<Tag> tags = parseTags(library, text, named);
        return tags.empty() ? items : Items(library, tags).tagged(Access::read);
    }
    for (const Row& row : rows)
        try {
            items.push_back(pastedItem(library, row.fields));
        } catch (const UsageFailure& failure) {
            Place{named, row.line}.refuse(failure.what());
        }
    return items;
}

std::vector<Item> seriesOf(const Library& library, const Item& item, int count, int step)
{
    QVector<QString> texts;
    QVector<int> values;
    const QString regName = QString::fromStdString(item.address.regName);
    if (library.intf_multiCopy(regName, item.address.first, count, step, texts, values) ==
        seriesIsClipped)
        throw UsageFailure(PanelTagTexts::tr("the series runs past the highest address of %1")
                               .arg(regName)
                               .toStdString());
    const bool isTag = item.name != toText(library, item.address);
    std::vector<Item> items;
    for (int i = 0; i < texts.size(); ++i) {
        Item next = item;
        next.address = parseAddress(library, item.address.station, item.address.regName,
                                    texts.at(i).toStdString(), ownValues(item.address));
        next.address.width = item.address.width;
        next.name = !isTag   ? toText(library, next.address)
                    : i == 0 ? item.name
                             : item.name + "_" + std::to_string(i + 1);
        items.push_back(next);
    }
    return items;
}

} // namespace dov417
