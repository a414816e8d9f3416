// The settings of a line, as a project keeps them.
#ifndef DOV417_PANEL_LINE_DIALOG_H
#define DOV417_PANEL_LINE_DIALOG_H

#include <QCheckBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <vector>

#include "live/line_members.h"

namespace dov417 {

class LineDialog : public QDialog {
    Q_OBJECT

public:
    LineDialog(const LineSetup& setup, QWidget* parent);

    // Of what was accepted.
    const LineSetup& setup() const
    {
        return setup_;
    }
    // Now, and not with the line that is opened next.
    bool isToOpen() const
    {
        return isToOpen_;
    }

private:
    struct Field {
        const LineMember* member;
        QLineEdit* text;   // or
        QCheckBox* choice; // null
    };

    void addRow(QFormLayout& form, const char* name, const QString& label, const QString& tip,
                const QString& hint);
    void addNumbers(QFormLayout& form);
    void judge();

    LineSetup setup_;
    bool isToOpen_ = false;
    std::vector<Field> fields_;
    QLabel* const verdict_;
    QPushButton* keep_ = nullptr;
    QPushButton* open_ = nullptr;
};

} // namespace dov417

#endif
