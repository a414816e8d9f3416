// New values for what is chosen, each with the range that is allowed. Nothing is written before all
// that is typed will do.
#ifndef DOV417_PANEL_WRITE_DIALOG_H
#define DOV417_PANEL_WRITE_DIALOG_H

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <unordered_map>
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
        QLabel* now; // what is known of it, while the dialog is open
        QLabel* standing;
        QLineEdit* text;
        QLabel* verdict;
    };

    static void showKnown(const Field& field, const ValueBook& book);
    void follow(const std::vector<Address>& changed);
    void judge();

    PanelDesk& desk_;
    std::vector<Field> fields_;
    std::unordered_multimap<Address, std::size_t, AddressHash> places_; // in the fields
    QLabel* const problem_;
    QPushButton* write_;
};

} // namespace dov417

#endif
