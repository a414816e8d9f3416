// Tells what a scan finds as it finds it, with a bar below that shows how far it is.
#ifndef DOV417_TOOL_SCAN_TELLER_H
#define DOV417_TOOL_SCAN_TELLER_H

#include <QTimer>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "line/conversation.h"
#include "line/line_log.h"
#include "scan/line_scan.h"
#include "tool/scan_ranges.h"

namespace dov417 {

class ScanTeller {
public:
    // names: of stations that are expected, those that have no name among them. Throws a Failure
    // if the log cannot be written.
    ScanTeller(const ScanSettings& settings, bool json, const std::string& log,
               const std::vector<Area>& areas, const StationNames& names);

    // ended: there is nothing more to tell.
    LineScanEvents events(std::function<void()> ended);
    // This is shown from now on, if the messages go to a terminal.
    void showBar(std::function<std::string()> text);
    void hideBar();
    // Where each station was found first.
    const std::map<int, ScanLine>& whereFound() const;

    void tellRange(const WordRun& run, const WordRange& range);
    void tellNotFound(const WordRun& run);
    // It was interrupted when so many words of it were known.
    void tellRest(const WordRun& run, int known);
    void passed(Direction direction, const QByteArray& bytes, const std::string& remark);
    void sayNotice(const std::string& text);
    void fail(const std::string& problem);

    void interrupt();
    bool isInterrupted() const;
    bool hasEnded() const;
    bool hasFailed() const;

    // Sums up. True if the scan came out as it should: somebody was found, and all that are
    // expected, and nothing was lost.
    bool finish();

private:
    void found(const Found& found);
    void heard(const ScanHeard& heard);
    bool isCut() const;
    bool tellMissing();
    bool isOverNetwork() const;
    std::string atLines(std::size_t count) const;
    void sayLine(const std::string& text);
    void clearBar();

    ScanSettings settings_;
    bool json_;
    StationNames names_;
    LineLog log_;
    std::string logName_;
    Conversation conversation_;
    QTimer barTimer_;
    std::function<std::string()> barText_;
    bool hasBar_ = false;
    std::set<std::string> lines_; // where somebody was found
    std::map<int, ScanLine> whereFound_;
    std::set<int> asked_; // stations
    int foundCount_ = 0;
    bool isRangeUnknown_ = false;
    bool isInUse_ = false;
    bool isInterrupted_ = false;
    bool hasEnded_ = false;
    std::string problem_;
};

} // namespace dov417

#endif
