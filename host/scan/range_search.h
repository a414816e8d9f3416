// Asks one station which of its words it answers, on a line where it was found.
#ifndef DOV417_SCAN_RANGE_SEARCH_H
#define DOV417_SCAN_RANGE_SEARCH_H

#include <functional>
#include <string>

#include "line/areas.h"
#include "link/serial_line.h"
#include "scan/range_halving.h"

namespace dov417 {

// Words of one area of a station.
struct WordRun {
    int station = 1;
    Area area;
    int first = 0;
    int count = 0;
};

struct RangeSearchEvents {
    std::function<void(const WordRange&)> found;
    std::function<void(const Transmission&)> ended; // each question, with what came for it
    std::function<void()> done;                     // all is known, or it was stopped
};

class RangeSearch {
public:
    // The line is borrowed.
    RangeSearch(SerialLine& line, const WordRun& run, const RangeSearchEvents& events);

    // To be called once the line is open.
    void start();
    // Asks nothing more; done comes once the request that is out has ended.
    void stop();
    // What was found and not told yet is told, though a request may be out.
    void end();
    int known() const; // words

private:
    void ask(bool repeats);
    void ended(const Transmission& record);
    void finish();

    SerialLine& line_;
    WordRun run_;
    RangeHalving halving_;
    RangeSearchEvents events_;
    int tries_ = 0;
    bool isStopping_ = false;
};

} // namespace dov417

#endif
