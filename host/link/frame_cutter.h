// Cuts what two others say on a line into frames, requests and replies alike.
//
// A frame is known by its length, which its function tells, and by its CRC, so that an adapter may
// hand over a request and its reply in one lump; what tells no length ends with a silence.
#ifndef DOV417_LINK_FRAME_CUTTER_H
#define DOV417_LINK_FRAME_CUTTER_H

#include <QByteArray>
#include <deque>
#include <vector>

#include "line/clock.h"

namespace dov417 {

struct Piece {
    QByteArray bytes;
    bool isFrame = false;   // else noise
    Clock::time_point at{}; // its last byte came
};

class FrameCutter {
public:
    std::vector<Piece> add(const QByteArray& bytes, Clock::time_point now);

    // The line has been silent: what is here will not grow.
    std::vector<Piece> endOfFrame();

    bool isEmpty() const;

private:
    struct Lump {
        int end; // in what is pending
        Clock::time_point at;
    };

    int soundLength(int from) const;
    bool mayGrow() const;
    bool isSoundToTheEnd(int from) const;
    int joinedLength() const;
    int noiseLength() const;
    int pending() const;
    std::vector<Piece> cut(bool isSilent);
    Piece take(int length, bool isFrame);

    QByteArray pending_;
    std::deque<Lump> lumps_;
};

} // namespace dov417

#endif
