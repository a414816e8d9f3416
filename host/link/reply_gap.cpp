#include "link/reply_gap.h"

#include <algorithm>

#include "line/crc16.h"

namespace dov417 {

namespace {

constexpr Micros maxGap(2000000); // a longer pause is the end, whatever follows

} // namespace

ReplyGap::ReplyGap(Micros initial) : gap_(initial) {}

Micros ReplyGap::value() const
{
    return gap_;
}

void ReplyGap::ended(const QByteArray& part, int length, Clock::time_point lastByte)
{
    part_ = part;
    length_ = length;
    lastByte_ = lastByte;
    pause_ = Micros(0);
}

void ReplyGap::came(const QByteArray& bytes, Clock::time_point now)
{
    if (part_.isEmpty())
        return;
    pause_ = std::max(pause_, std::chrono::duration_cast<Micros>(now - lastByte_));
    part_ += bytes;
    lastByte_ = now;
    if (part_.size() < length_ && pause_ <= maxGap)
        return;
    // Twice as long, as no pause is as long as the last one.
    if (pause_ <= maxGap && hasGoodCrc(part_.left(length_)))
        gap_ = std::max(gap_, std::min(maxGap, 2 * pause_));
    part_.clear();
}

} // namespace dov417
