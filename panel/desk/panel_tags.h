// What is watched, value by value: what each is called, how it is written, what may be written to
// it.
#ifndef DOV417_PANEL_PANEL_TAGS_H
#define DOV417_PANEL_PANEL_TAGS_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "session/view_labels.h"

namespace dov417 {

// The same one for all of its values, of which there may be thousands.
class SharedItem {
public:
    SharedItem() : SharedItem(Item()) {}
    explicit SharedItem(const Item& item) : item_(std::make_shared<const Item>(item)) {}
    operator const Item&() const
    {
        return *item_;
    }
    const Item* operator->() const
    {
        return item_.get();
    }

private:
    std::shared_ptr<const Item> item_;
};

struct PanelValue {
    ViewLabel label;
    Address address;    // of this one value
    SharedItem item;    // that it is a value of
    std::size_t place;  // of that item, until something else is watched
    std::string locked; // why it can never be written; empty where it can
};

struct PanelTags {
    std::vector<Item> items;
    std::vector<PanelValue> values;
};

PanelTags panelTags(const Library& library, const std::vector<Item>& items);

// Each address once, in their order.
std::vector<Address> watchedAddresses(const std::vector<Item>& items);

// Of one value, as a write takes it. Throws a UsageFailure that says what is wrong with the text,
// or why nothing may be written there.
std::vector<unsigned char> bytesToWrite(const PanelValue& value, const std::string& text);

// "0 to 65535", "-10 to 40.5 °C": what a person may write there; empty where it says nothing new.
std::string allowedRange(const PanelValue& value);

// What a spreadsheet gives: a tag file's rows with their header, or rows of an address, or of a
// name and an address. Throws a UsageFailure that names the row; nothing of it is to be used then.
std::vector<Item> pastedItems(const Library& library, const std::string& text);

// So many addresses in this distance from the item's own, the item included; see intf_multiCopy().
// Throws a UsageFailure where the series runs past the highest address.
std::vector<Item> seriesOf(const Library& library, const Item& item, int count, int step);

} // namespace dov417

#endif
