// One scan from its start to its end, or to Ctrl-C.
#ifndef DOV417_TOOL_SCAN_RUN_H
#define DOV417_TOOL_SCAN_RUN_H

#include <QEventLoop>
#include <QString>
#include <QTimer>
#include <functional>
#include <set>
#include <string>

#include "link/serial_line.h"
#include "live/shutdown.h"
#include "tool/scan_teller.h"

namespace dov417 {

class ScanRun {
public:
    ScanRun(const std::string& port, const Rs485& direction, ScanTeller& teller);

    // Ends as soon as all of `wanted` are found, if any are.
    void findStations(const ScanSettings& settings, const ScanQuestions& questions,
                      std::set<int> wanted);
    void findRanges(const WordRun& run);

private:
    LineObserver observer();
    void portChanged(bool isOpen, const std::string& message);
    void giveUp();
    void recordEnd(const Transmission& each);
    void wait(const std::function<bool()>& isOver, const std::function<void()>& stop);
    void interrupt();

    QString port_;
    Rs485 direction_;
    ScanTeller& teller_;
    QEventLoop loop_;
    std::function<void()> stop_;
    std::function<void()> begin_; // what awaits that the line is open
    QTimer patience_;             // for that
    std::string refusal_;
    bool isOverNetwork_ = false;
    Shutdown shutdown_;
};

} // namespace dov417

#endif
