// The page of the line: every frame as it passes, in words, and byte by byte below.
#ifndef DOV417_PANEL_LINE_PAGE_H
#define DOV417_PANEL_LINE_PAGE_H

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <vector>

#include "panel/desk/panel_page.h"
#include "panel/frames/frame_table.h"
#include "panel/frames/line_filter.h"

namespace dov417 {

class LinePage : public PanelPage {
    Q_OBJECT

public:
    explicit LinePage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;

    // A recorded log in place of what passes; false where it cannot be read, which it tells, and
    // nothing is different.
    bool openLog(const QString& file);
    bool saveLog(const QString& file);
    // Stands still at the request of this number, of a transmission or of the log that is shown;
    // false where it is not here, which it tells.
    bool showFrame(long long number);
    void backToLine();

signals:
    // What is shown from now on.
    void logShown(const dov417::RecordedLog& log);
    void lineShown();

private:
    void makeTable();
    void makeFields();
    QWidget* makeTools();
    QWidget* makeFiles();
    void passed(const std::vector<Passed>& passed, long long notTold);
    void setHeld(bool isHeld);
    void lookAt(bool isEnd);
    void showFields();
    void showWhatStands();

    LineModel model_;
    LineFilter filter_;
    FrameTable* const table_;
    QTableWidget* const fields_;
    QPushButton* const hold_;
    QPushButton* const back_;
    QLabel* const standing_;
    // While it stands still: what passes meanwhile, and what of it is dropped.
    std::vector<LineRow> waiting_;
    long long notShown_ = 0;
    bool isHeld_ = false;
    bool isNoneShown_ = false; // of the rows, as the filter has it
    QString log_;              // that is shown in place of the line; empty: the line
    std::string logWire_;
};

} // namespace dov417

#endif
