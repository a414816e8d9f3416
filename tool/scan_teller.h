// Tells what a scan finds as it finds it, with a bar below that shows how far it is.
#ifndef DOV417_TOOL_SCAN_TELLER_H
#define DOV417_TOOL_SCAN_TELLER_H

#include <QTimer>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "line/conversation.h"
#include "line/line_log.h"
#include "scan/line_scan.h"

namespace dov417 {

class ScanTeller {
public:
    // Throws a Failure if the log cannot be written.
    ScanTeller(const ScanSettings& settings, bool json, const std::string& log,
               const std::vector<Area>& areas);

    // ended: there is nothing more to tell.
    LineScanEvents events(std::function<void()> ended);
    // From now on, if the messages go to a terminal.
    void showProgressOf(const LineScan& scan);

    void interrupt();
    bool isInterrupted() const;
    bool hasEnded() const;

    // Sums up. True if the scan came out as it should: somebody was found, and nothing was lost.
    bool finish();

private:
    void found(const Found& found);
    void heard(const Heard& heard);
    void passed(Direction direction, const QByteArray& bytes, const std::string& remark);
    void sayLine(const std::string& text);
    void sayNotice(const std::string& text);
    void clearBar();

    ScanSettings settings_;
    bool json_;
    LineLog log_;
    std::string logName_;
    Conversation conversation_;
    QTimer barTimer_;
    bool hasBar_ = false;
    std::set<std::string> lines_; // where somebody was found
    int foundCount_ = 0;
    bool isInUse_ = false;
    bool isInterrupted_ = false;
    bool hasEnded_ = false;
    std::string problem_;
};

} // namespace dov417

#endif
