// Offers what an earlier panel kept and could not save.
#ifndef DOV417_PANEL_RECOVERY_DIALOG_H
#define DOV417_PANEL_RECOVERY_DIALOG_H

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>
#include <vector>

#include "panel/project/unsaved_copies.h"

namespace dov417 {

class RecoveryDialog : public QDialog {
    Q_OBJECT

public:
    RecoveryDialog(std::vector<UnsavedCopy>& copies, QWidget* parent);

    // The one to take up; null: none, now.
    UnsavedCopy* chosen() const;

private:
    void list();
    void showButtons();
    void removeCurrent();

    std::vector<UnsavedCopy>& copies_;
    QTreeWidget* const table_;
    QPushButton* take_ = nullptr;
    QPushButton* remove_ = nullptr;
};

} // namespace dov417

#endif
