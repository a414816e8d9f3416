// The page of lamps: bits word by word; a click writes one.
#ifndef DOV417_PANEL_LAMPS_PAGE_H
#define DOV417_PANEL_LAMPS_PAGE_H

#include <QCheckBox>
#include <QLabel>
#include <QTableView>

#include "panel/desk/panel_page.h"
#include "panel/values/lamps_model.h"

namespace dov417 {

class LampsPage : public PanelPage {
    Q_OBJECT

public:
    explicit LampsPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void toggle(const QModelIndex& index);
    void write(const PanelValue& value, bool on);
    void settle();
    void showWhatThereIs();

    LampsModel model_;
    bool isStale_ = true; // other tags are watched than the model has
    QTableView* const table_;
    QCheckBox* const asks_;
    QLabel* const empty_;
};

} // namespace dov417

#endif
