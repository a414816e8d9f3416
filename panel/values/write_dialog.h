// New values for what is chosen, each with the range that is allowed. Nothing is written before all
// that is typed will do.
#ifndef DOV417_PANEL_WRITE_DIALOG_H
#define DOV417_PANEL_WRITE_DIALOG_H

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <vector>

#include "panel/desk/panel_desk.h"

namespace dov417 {

class WriteDialog : public QDialog {
    Q_OBJECT

public:
    // The values by copy: what is watched may change while it is open. It writes by itself when it
    // is accepted; an empty field leaves its value alone.
    WriteDialog(PanelDesk& desk, const std::vector<PanelValue>& values, QWidget* parent);

    void accept() override;

private:
    struct Field {
        PanelValue value;
        QLineEdit* text;
        QLabel* verdict;
    };

    void judge();

    PanelDesk& desk_;
    std::vector<Field> fields_;
    QLabel* const problem_;
    QPushButton* write_;
};

} // namespace dov417

#endif
