// What the menu of the rows does.
#include <QActionGroup>
#include <QHeaderView>
#include <QMenu>
#include <algorithm>
#include <set>

#include "panel/values/values_page.h"
#include "text/values.h"

namespace dov417 {

void ValuesPage::showMenu(const QPoint& place)
{
    QMenu menu(this);
    if (!chosenRows().empty())
        addRowActions(menu);
    addOrders(*menu.addMenu(tr("&Order of the rows")));
    menu.exec(table_->viewport()->mapToGlobal(place));
}

void ValuesPage::addRowActions(QMenu& menu)
{
    QAction* const write = menu.addAction(tr("&Write \u2026"), this, [this]() { writeChosen(); });
    write->setEnabled(write_->isEnabled());
    QMenu* const formats = menu.addMenu(tr("&Format"));
    const std::vector<PanelValue> values = chosenValues();
    for (const std::string& name : notationNames()) {
        const std::optional<Notation> notation = parseFormat(name).notation;
        const bool fitsAll = std::all_of(values.begin(), values.end(), [&](const PanelValue& each) {
            return notation && fits(each.address.width, Format{*notation});
        });
        if (fitsAll)
            formats->addAction(QString::fromStdString(name), this,
                               [this, name]() { chooseFormat(QString::fromStdString(name)); });
    }
    menu.addAction(tr("Show in &trends"), this, [this]() {
        std::vector<Address> addresses;
        for (const PanelValue& each : chosenValues())
            addresses.push_back(each.address);
        emit trendsAsked(addresses);
    });
    menu.addAction(tr("&Remove"), this, [this]() { removeChosen(); });
}

// What a click on a column's head does, with keys; and the way back.
void ValuesPage::addOrders(QMenu& menu)
{
    const QHeaderView& head = *table_->horizontalHeader();
    const int current = head.sortIndicatorSection();
    const bool isFalling = head.sortIndicatorOrder() == Qt::DescendingOrder;
    auto* const orders = new QActionGroup(&menu);
    const auto add = [&](const QString& text, int column, bool isChosen, Qt::SortOrder order) {
        QAction* const action = menu.addAction(
            text, table_, [this, column, order]() { table_->sortByColumn(column, order); });
        action->setCheckable(true);
        action->setChecked(isChosen);
        orders->addAction(action);
    };
    add(tr("As they were added"), -1, current < 0, Qt::AscendingOrder);
    for (int column = 0; column < ValuesModel::columns; ++column) {
        const QString name = model_.headerData(column, Qt::Horizontal).toString();
        add(tr("%1, rising").arg(name), column, column == current && !isFalling,
            Qt::AscendingOrder);
        add(tr("%1, falling").arg(name), column, column == current && isFalling,
            Qt::DescendingOrder);
    }
}

void ValuesPage::chooseFormat(const QString& name)
{
    std::set<std::size_t> places;
    for (const PanelValue& value : chosenValues())
        places.insert(value.place);
    std::vector<Item> items = desk_.tags().items; // all or none of them
    try {
        for (const std::size_t place : places) {
            Item& item = items.at(place);
            item.format.notation = *parseFormat(name.toStdString()).notation;
            item.format.scaling =
                isNumber(item.format.notation) ? item.ofLimits.scaling : Scaling();
            requireFormat(item.address.width, item.format);
        }
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return;
    }
    desk_.setItems(items);
}

} // namespace dov417
