// Where addresses are typed to be watched, with the library's verdict beside the field.
#ifndef DOV417_PANEL_ADD_BAR_H
#define DOV417_PANEL_ADD_BAR_H

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QWidget>
#include <vector>

#include "panel/desk/panel_desk.h"

namespace dov417 {

class AddBar : public QWidget {
    Q_OBJECT

public:
    explicit AddBar(PanelDesk& desk);

signals:
    void wanted(const std::vector<dov417::Item>& items);

private:
    std::vector<Item> typed() const;
    void judge();
    void add();

    PanelDesk& desk_;
    QLineEdit* const field_;
    QSpinBox* const count_;
    QSpinBox* const step_;
    QPushButton* const add_;
    QLabel* const verdict_;
};

} // namespace dov417

#endif
