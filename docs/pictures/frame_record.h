// Frames and other things that passed, as records.
#ifndef DOV417_DOCS_PICTURES_FRAME_RECORD_H
#define DOV417_DOCS_PICTURES_FRAME_RECORD_H

#include <map>

#include "panel/desk/line_batch.h"
#include "text/placed_json.h"

namespace dov417 {

long long sinceBegin(Clock::time_point time);  // microseconds; 0: no time
Clock::time_point fromBegin(long long micros); // the same
std::string hexOf(const QByteArray& bytes);
QByteArray bytesOf(const std::string& hex);

// What was asked before is named by the number of the frame that asked it first.
class FrameRecords {
public:
    OrderedJson record(const Passed& passed);
    Passed passed(const OrderedJson& record);

private:
    OrderedJson ended(const Transmission& transmission);
    Transmission ended(const OrderedJson& record);

    std::map<std::string, long long> numbers_;  // that are written, by their request
    std::map<long long, OrderedJson> requests_; // that were read, by number
};

// What was known of the transmission when it began.
Transmission begunOf(Transmission transmission);

} // namespace dov417

#endif
