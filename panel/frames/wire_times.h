// What the line was used for, moment by moment: spans that follow each other without a hole and
// without overlap, made of what passed. Pure: no clock, no window. Fixed memory: the oldest go
// first.
//
// When a byte was on the wire nobody tells: of a frame that was sent it is reckoned from when it
// was handed over, of one that came from when its last byte came, by the line's speed. Over a
// network there is no such speed; then, and where bytes come faster than the line carries them, a
// span of a reply is what its bytes took to come, and that of the request is nothing.
#ifndef DOV417_PANEL_WIRE_TIMES_H
#define DOV417_PANEL_WIRE_TIMES_H

#include <array>
#include <deque>
#include <optional>
#include <set>
#include <vector>

#include "line/serial_format.h"
#include "panel/desk/line_batch.h"

namespace dov417 {

enum class SpanKind {
    request,      // its bytes
    responseTime, // the controller's time: from the request's last byte to the reply's first one
    reply,        // its bytes
    timeOut,      // waited in vain
    stray,        // bytes that were no reply
    interFrame,   // the inter-frame delay, before a frame
    idle,         // nobody has anything to say
    noLine,       // the port was away
    missing       // not told: this computer was too busy
};
constexpr int spanKinds = 9;

enum class SpanPurpose {
    regular,
    retry, // of a frame that was sent again
    marker // of our own, to tell late replies
};

struct WireSpan {
    Clock::time_point begin{};
    Clock::time_point end{};
    SpanKind kind = SpanKind::idle;
    SpanPurpose purpose = SpanPurpose::regular;
    long long frame = 0; // number of the transmission; 0: of none
    int station = -1;    // -1: of none
};

// A transmission and what it took.
struct WireFrame {
    Transmission told; // as far as it is known
    bool hasEnded = false;
    Clock::time_point begin{};
    Clock::time_point end{};
    std::array<Micros, spanKinds> took{}; // indexed by SpanKind

    Micros tookFor(SpanKind kind) const
    {
        return took.at(static_cast<std::size_t>(kind));
    }
};

class WireTimes {
public:
    static constexpr std::size_t maxFrames = 20000;
    static constexpr std::size_t maxSpans = 10 * maxFrames;

    // Another line.
    void clear();
    // What bytes take; nothing: that is not known, as over a network.
    void setWire(const std::optional<SerialFormat>& wire);
    bool knowsBytes() const
    {
        return wire_.has_value();
    }
    // Bytes of the latest reply came faster than the line carries them.
    bool isFaster() const
    {
        return isFaster_;
    }

    void add(const std::vector<Passed>& passed, long long notTold);
    // The port has gone: nothing more comes until the next frame.
    void lineGone();

    const std::deque<WireSpan>& spans() const
    {
        return spans_;
    }
    // From the end of the spans to this moment: the frame that is under way, waiting, or idle time.
    std::vector<WireSpan> underWay(Clock::time_point now) const;
    // Those that went out, in their order.
    const std::deque<WireFrame>& frames() const
    {
        return frames_;
    }
    // When each cycle began, in their order.
    const std::deque<Clock::time_point>& cycles() const
    {
        return cycles_;
    }
    const std::set<int>& stations() const
    {
        return stations_;
    }
    // All are told from the first of these moments to the second.
    Clock::time_point begin() const
    {
        return spans_.empty() ? end_ : spans_.front().begin;
    }
    Clock::time_point end() const
    {
        return end_;
    }

    // Null where it is none of these, or too long ago.
    const WireFrame* find(long long number) const;
    // The place of the last one that had begun by then; nothing: none had.
    std::optional<std::size_t> placeAt(Clock::time_point time) const;
    // The place of the first span that ends after it.
    std::size_t spanAt(Clock::time_point time) const;

private:
    void began(const Passed& passed);
    void ended(const Passed& passed);
    void strayCame(const Stray& stray);
    void layOut(WireFrame& frame, Clock::time_point toldAt);
    void breakOff();
    void put(SpanKind kind, Clock::time_point until, WireFrame* frame = nullptr);
    void fillUntil(Clock::time_point begin);
    std::vector<WireSpan> between(Clock::time_point begin) const;
    Clock::duration characters(const QByteArray& bytes) const;
    bool isOpen() const; // a frame that has not ended
    void forgetOldest();

    std::optional<SerialFormat> wire_;
    bool isFaster_ = false;
    bool isGone_ = false;
    bool isMissing_ = false;
    std::deque<WireSpan> spans_;
    std::deque<WireFrame> frames_;
    std::deque<Clock::time_point> cycles_;
    std::set<int> stations_;
    std::vector<Stray> strays_; // that came for the frame under way
    std::optional<long long> cycle_;
    Clock::time_point end_{};
};

// Where the frame's purpose says what its time was for.
SpanPurpose purposeOf(const Transmission& transmission);

} // namespace dov417

#endif
