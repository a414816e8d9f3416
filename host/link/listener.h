// What two others say to each other on a line: requests, replies, and which belongs to which.
//
// A reply carries no address. It is that of the oldest request that it can belong to, as in
// books.h; where requests that differ could be meant, because one was not answered, that is told
// instead of an address. The reply to a write of one value is the request once more: it is told
// from a repetition by its time, if the station's is known.
#ifndef DOV417_LINK_LISTENER_H
#define DOV417_LINK_LISTENER_H

#include <QByteArray>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "line/areas.h"
#include "line/clock.h"
#include "line/line_log.h"
#include "line/serial_format.h"
#include "link/books.h"
#include "link/frame_cutter.h"

namespace dov417 {

enum class HeardAs {
    request,
    reply,
    unclear, // a reply, to one of several requests
    alike,   // a request that is repeated, or the reply to it
    unasked, // a reply to no request that was heard
    noise    // no frame
};

struct Heard {
    HeardAs as = HeardAs::noise;
    QByteArray bytes;
    Clock::time_point at{};    // its last byte came
    QByteArray request;        // that is answered, if that is clear
    Micros after{0};           // of a reply: from the end of the request to its own begin
    bool isUnanswered = false; // of a request: the request before it was not answered
};

class Listener {
public:
    // A station begins to answer within the horizon, or not at all.
    Listener(const SerialFormat& wire, Clock::duration horizon,
             std::function<void(const Heard&)> heard);

    void bytesCame(const QByteArray& bytes, Clock::time_point now);
    // The line has been silent: what has come will not grow.
    void silence();
    // Something may have passed that was not heard.
    void missed();
    bool isWaiting() const; // for more of a frame

private:
    void take(const std::vector<Piece>& pieces);
    void takeFrame(const Piece& frame);
    void request(const Piece& frame, HeardAs as);
    void reply(const Piece& frame);
    Micros since(Clock::time_point asked, const Piece& reply) const;
    bool isSoon(const Piece& frame) const;

    SerialFormat wire_;
    std::function<void(const Heard&)> heard_;
    FrameCutter cutter_;
    Books books_;
    long long requests_ = 0;
    long long heardBefore_ = 0;          // of them, before one may have been missed
    bool isAnswered_ = true;             // the last request, or it was a broadcast
    std::array<Micros, 256> slowest_{};  // of each station's clear replies
    std::array<bool, 256> hasReplied_{}; // clearly
};

// Which way it went, for the log. What could be two things makes no claim on a value there.
Direction directionOf(HeardAs as);

// Why it is not clear what it belongs to; empty where it is.
std::string heardReason(const Heard& heard);

// In the words of `trace`, with the reason.
std::string heardText(const Heard& heard, const std::vector<Area>& areas);

} // namespace dov417

#endif
