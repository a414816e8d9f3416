#include "session/view_labels.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "text/address_values.h"

namespace dov417 {

namespace {

std::string textOf(const View& view, const ViewLabel& label, const ValueBytes& value)
{
    return valueTexts(view.address, label.format, value.data()).front();
}

} // namespace

void labelViews(const Library& library, const Item& item, std::vector<ViewLabel>& labels)
{
    const Address& address = item.address;
    const int count = valueCount(address);
    const int step = address.length / std::max(1, count);
    const std::vector<std::string> texts = // the driver takes longer over them than all else
        addressTexts(library, address.regName, address.first, count, step);
    const bool isTag = texts.empty() || item.name != toText(address, texts.front(), texts.back());
    const std::string place = std::to_string(address.station) + "/" + address.regName + ":";
    for (int i = 0; i < count; ++i) {
        ViewLabel label;
        label.address = place + texts.at(static_cast<std::size_t>(i));
        label.name = !isTag       ? label.address
                     : count == 1 ? item.name
                                  : item.name + "[" + std::to_string(i) + "]";
        label.format = item.format;
        labels.push_back(std::move(label));
    }
}

std::vector<ViewLabel> labelViews(const Library& library, const std::vector<Item>& items)
{
    std::vector<ViewLabel> labels;
    labels.reserve(items.size());
    for (const Item& item : items)
        labelViews(library, item, labels);
    return labels;
}

void tellApart(std::vector<ViewLabel>& labels)
{
    std::map<std::string, std::set<std::string>> formats;
    for (const ViewLabel& label : labels)
        formats[label.name].insert(formatText(label.format));
    for (ViewLabel& label : labels) {
        const std::string format = formatText(label.format);
        if (formats.at(label.name).size() > 1 && format != formatText(Format()))
            label.name += "@" + format;
    }
}

std::string valueText(const View& view, const ViewLabel& label)
{
    return view.hasValue ? textOf(view, label, view.value) : "?";
}

std::string previousText(const View& view, const ViewLabel& label)
{
    return view.changes > 0 ? textOf(view, label, view.previous) : "";
}

std::string shownText(const View& view, const ViewLabel& label)
{
    return view.hasValue ? withUnit(valueText(view, label), label.format) : valueText(view, label);
}

std::string shownPreviousText(const View& view, const ViewLabel& label)
{
    const std::string text = previousText(view, label);
    return text.empty() ? text : withUnit(text, label.format);
}

std::string bitsText(const View& view, const ValueBytes& value, const ViewLabel& label)
{
    ViewLabel inHex = label;
    inHex.format = {Notation::hex, label.format.order};
    return textOf(view, inHex, value);
}

} // namespace dov417
