// The page of trends: values over time.
#ifndef DOV417_PANEL_TRENDS_PAGE_H
#define DOV417_PANEL_TRENDS_PAGE_H

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableView>
#include <QTimer>

#include "panel/desk/panel_page.h"
#include "panel/trends/trend_export.h"
#include "panel/trends/trend_notes_dialog.h"
#include "panel/trends/trend_readout.h"
#include "panel/trends/trend_recorder.h"
#include "panel/trends/trend_stack.h"
#include "panel/trends/trend_values_dialog.h"

namespace dov417 {

class TrendsPage : public PanelPage {
    Q_OBJECT

public:
    explicit TrendsPage(PanelDesk& desk);
    // A table that is being written is written to its end.
    ~TrendsPage() override;

    QString title() const override;
    QIcon icon() const override;
    std::string settingsName() const override;
    OrderedJson settings() const override;
    std::function<void()> prepared(const OrderedJson& settings) override;
    bool mayForget() override;

    // Into the plot that was touched last; says which of them cannot be shown.
    void showValues(const std::vector<Address>& addresses);
    // False where it cannot be written; what is seen, or all where it runs.
    bool saveTable(const QString& file);
    bool savePicture(const QString& file);
    bool saveNotes(const QString& file); // all of them

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeTools();
    QWidget* makeMenus();
    QPushButton* makeNotes();
    void makeReadout();
    QWidget* makeMemory();
    bool hasRoom(); // for one more value; says so where not
    void putIn(const TrendValue& value, bool isIn);
    void arrange(); // by a person
    void showArrangement();
    void chooseByItself();
    bool resolve(); // something is another one then
    void beginProject();
    void showView();
    void showCursors();
    void refresh();
    void followNotes();
    void askNote();
    void editNote(const TrendNote& note, const QString& text);
    void removeNotes(const std::vector<TrendNote>& notes);
    void changeNotes();
    void takeNotes();
    void showNotes();
    void addNote(const QString& text); // of what happened now
    void openNotes();
    void listNotes();
    void showMoment(TrendTime at);
    void askFile(bool isTable);
    void removeChosen();
    void removePlot();
    void openValues();
    bool beginTable(const QString& file, const std::vector<TrendValue>& values, TrendTime from,
                    TrendTime to, const QString& whenDone);
    void writeTable();
    void endTable(const QString& how);
    void finishTable();

    TrendHistory history_;
    TrendClock clock_;
    TrendRecorder recorder_;
    TrendArrangement arrangement_;
    bool isArranged_ = false; // by a person or a project
    TrendTime begun_ = 0;     // when values came first; 0: none
    TrendReadout readout_;
    TrendStack* const stack_;
    QTableView* const table_;
    QStackedWidget* const upper_;
    QPushButton* const hold_;
    QComboBox* const span_;
    QSpinBox* const memory_;
    QLabel* const empty_;
    QLabel* const between_;
    TrendValuesDialog* const dialog_;
    TrendNotesDialog* const notesDialog_;
    std::unique_ptr<TrendTable> export_;
    QString exported_;       // its file
    QString whenExported_;   // to be told
    bool isExported_ = true; // the last one, or there was none
    QTimer refreshTimer_;
    QTimer exportTimer_;
};

} // namespace dov417

#endif
