// The page of values: what is watched as a table, with adding, writing and the list of writes.
#ifndef DOV417_PANEL_VALUES_PAGE_H
#define DOV417_PANEL_VALUES_PAGE_H

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include "panel/desk/panel_page.h"
#include "panel/values/values_filter.h"
#include "panel/values/values_model.h"

namespace dov417 {

class ValuesPage : public PanelPage {
    Q_OBJECT

public:
    explicit ValuesPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;
    std::string settingsName() const override;
    OrderedJson settings() const override;
    std::function<void()> prepared(const OrderedJson& settings) override;

signals:
    // These are to be seen over time.
    void trendsAsked(const std::vector<dov417::Address>& addresses);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void makeTable();
    QWidget* makeTools();
    QWidget* makeWrites();
    std::vector<int> chosenRows() const; // of the model
    std::vector<PanelValue> chosenValues() const;
    void showMenu(const QPoint& place);
    void addRowActions(QMenu& menu);
    void addOrders(QMenu& menu);
    void chooseFormat(const QString& name);
    void writeChosen();
    void removeChosen();
    void add(const std::vector<Item>& items);
    void paste();
    void showButtons();

    ValuesModel model_;
    ValuesFilter filter_;
    QTableView* const table_;
    QLineEdit* const search_;
    QComboBox* const grouping_;
    QPushButton* const write_;
    QPushButton* const remove_;
    QLabel* const empty_;
    QTimer ageTimer_;
};

} // namespace dov417

#endif
