// The page of the line's time: the last cycles to scale, and what the line was used for.
#ifndef DOV417_PANEL_WIRE_PAGE_H
#define DOV417_PANEL_WIRE_PAGE_H

#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>

#include "panel/desk/panel_page.h"
#include "panel/frames/recorded_log.h"
#include "panel/frames/wire_shares_model.h"
#include "panel/frames/wire_view.h"

namespace dov417 {

class WirePage : public PanelPage {
    Q_OBJECT

public:
    // Between two pictures while it follows the line: a person is to read them.
    static constexpr std::chrono::milliseconds picturePause{100};

    explicit WirePage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;
    std::string settingsName() const override;
    OrderedJson settings() const override;
    std::function<void()> prepared(const OrderedJson& settings) override;

    // A recording in place of the line, which goes on unseen.
    void showLog(const RecordedLog& log);
    void showLine();

signals:
    // A person wants to see the frame of this number on the page of the line: one of the line, or
    // of the recording.
    void frameWanted(long long number);
    // A person has seen enough of the recording.
    void lineWanted();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* makeTools();
    QWidget* makeBelow();
    void passed(const std::vector<Passed>& passed, long long notTold);
    void lineBegan();
    void stateChanged();
    void learnWire();
    void picture();
    void showWindow();
    void showFrame();
    void showDistance();
    void showShares();
    void showWhatIsKnown();
    void showParts();
    QString recordingText() const;
    const WireTimes& shown() const
    {
        return log_ ? logTimes_ : times_;
    }

    WireTimes times_; // of the line, whatever is shown
    std::optional<RecordedLog> log_;
    WireTimes logTimes_;
    std::string wire_; // as the line's state has it
    WireView* const view_;
    WireSharesModel shares_;
    QTableView* const table_;
    QPushButton* const follow_;
    QPushButton* const back_;
    QSpinBox* const cycles_;
    QLabel* const distance_;
    QLabel* const known_;
    QLabel* const frame_;
    QLabel* const sentence_;
    QTimer pictureTimer_;
    bool hasNews_ = true;
};

} // namespace dov417

#endif
