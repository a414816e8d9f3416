#include "panel/project/window_parts.h"

#include <QHeaderView>
#include <QSplitter>
#include <QTableView>
#include <algorithm>
#include <vector>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int maxPartPixels = 32767;
const char* const columnMember = "column"; // from 1; 0: as they were added
const char* const fallingMember = "falling";

// Of a project, and whose it is.
struct KeptPart {
    const char* member;
    const char* widget;
};
const KeptPart keptColumns[] = {{"values-columns", "values"}, {"writes-columns", "writes"}};
const KeptPart keptOrder = {"values-order", "values"};
const KeptPart keptSplitters[] = {{"values-split", "valuesSplit"},
                                  {"trends-split", "trendsSplit"},
                                  {"line-split", "lineSplit"},
                                  {"plan-split", "planSplit"},
                                  {"plan-map-split", "planMapSplit"}};

template <typename Widget>
Widget& widgetOf(const QWidget& window, const KeptPart& part)
{
    auto* const widget = window.findChild<Widget*>(QLatin1String(part.widget));
    Q_ASSERT(widget);
    return *widget;
}

std::vector<int> pixelListIn(const OrderedJson& layout, const char* member)
{
    std::vector<int> all;
    const auto found = layout.find(member);
    if (found == layout.end())
        return all;
    const auto isFit = [](const OrderedJson& each) {
        return each.is_number_integer() && each.get<double>() >= 0 &&
               each.get<double>() <= maxPartPixels;
    };
    if (!found->is_array() || !std::all_of(found->begin(), found->end(), isFit))
        throw UsageFailure(std::string(member) + ": a list of whole numbers from 0 to " +
                           std::to_string(maxPartPixels) + " is needed");
    for (const OrderedJson& each : *found)
        all.push_back(each.get<int>());
    return all;
}

struct RowOrder {
    int column = -1;
    Qt::SortOrder order = Qt::AscendingOrder;
};

RowOrder orderIn(const OrderedJson& layout, int columns)
{
    RowOrder wanted;
    const auto found = layout.find(keptOrder.member);
    if (found == layout.end())
        return wanted;
    const auto refuse = [columns]() {
        throw UsageFailure(std::string(keptOrder.member) + ": a column from 0 to " +
                           std::to_string(columns) + " is needed, and whether it is falling");
    };
    if (!found->is_object())
        refuse();
    const OrderedJson column = found->value(columnMember, OrderedJson(0));
    const OrderedJson isFalling = found->value(fallingMember, OrderedJson(false));
    if (!column.is_number_integer() || column.get<double>() < 0 || column.get<double>() > columns ||
        !isFalling.is_boolean())
        refuse();
    wanted.column = column.get<int>() - 1;
    wanted.order = isFalling.get<bool>() ? Qt::DescendingOrder : Qt::AscendingOrder;
    return wanted;
}

} // namespace

OrderedJson partsLayout(const QWidget& window)
{
    OrderedJson layout = OrderedJson::object();
    for (const KeptPart& part : keptColumns) {
        const QHeaderView& head = *widgetOf<QTableView>(window, part).horizontalHeader();
        OrderedJson widths = OrderedJson::array();
        for (int column = 0; column < head.count(); ++column)
            widths.push_back(head.sectionSize(column));
        layout[part.member] = widths;
    }
    const QHeaderView& head = *widgetOf<QTableView>(window, keptOrder).horizontalHeader();
    layout[keptOrder.member] = {{columnMember, head.sortIndicatorSection() + 1},
                                {fallingMember, head.sortIndicatorOrder() == Qt::DescendingOrder}};
    for (const KeptPart& part : keptSplitters) {
        const QList<int> sizes = widgetOf<QSplitter>(window, part).sizes();
        const bool isKnown =
            std::any_of(sizes.begin(), sizes.end(), [](int size) { return size > 0; });
        if (isKnown)
            layout[part.member] = std::vector<int>(sizes.begin(), sizes.end());
    }
    return layout;
}

std::function<void()> preparedParts(QWidget& window, const OrderedJson& layout)
{
    std::vector<std::function<void()>> all;
    for (const KeptPart& part : keptColumns) {
        auto& table = widgetOf<QTableView>(window, part);
        const std::vector<int> widths = pixelListIn(layout, part.member);
        all.emplace_back([&table, widths]() {
            int column = 0;
            for (const int width : widths)
                if (column < table.model()->columnCount())
                    table.setColumnWidth(column++, width);
        });
    }
    auto& ordered = widgetOf<QTableView>(window, keptOrder);
    const RowOrder order = orderIn(layout, ordered.horizontalHeader()->count());
    all.emplace_back([&ordered, order]() { ordered.sortByColumn(order.column, order.order); });
    for (const KeptPart& part : keptSplitters) {
        auto& splitter = widgetOf<QSplitter>(window, part);
        const std::vector<int> sizes = pixelListIn(layout, part.member);
        if (static_cast<int>(sizes.size()) == splitter.count())
            all.emplace_back([&splitter, sizes]() {
                splitter.setSizes(QVector<int>(sizes.begin(), sizes.end()).toList());
            });
    }
    return [all]() {
        for (const auto& each : all)
            each();
    };
}

} // namespace dov417
