#include "tool/wide_rows.h"

#include "text/characters.h"

namespace dov417 {

WideRows::WideRows(const std::vector<ViewLabel>& labels) : labels_(labels), told_(labels.size()) {}

std::vector<std::string> WideRows::header() const
{
    std::vector<std::string> names;
    for (const ViewLabel& label : labels_) {
        const std::string& unit = label.format.scaling.unit;
        names.push_back(unit.empty() ? label.name : label.name + " (" + unit + ")");
    }
    return names;
}

std::vector<std::string> WideRows::next(const std::vector<View>& views)
{
    std::vector<std::string> fields;
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        const View& view = views.at(i);
        const bool isNew = view.quality() == Quality::good && view.lastGood != told_.at(i);
        fields.push_back(isNew ? withoutQuotes(valueText(view, labels_.at(i))) : std::string());
        told_.at(i) = view.lastGood;
    }
    return fields;
}

} // namespace dov417
