// The silence after which a reply that has begun is taken to have ended: longer once a reply went
// on after that.
#ifndef DOV417_LINK_REPLY_GAP_H
#define DOV417_LINK_REPLY_GAP_H

#include <QByteArray>

#include "line/clock.h"

namespace dov417 {

class ReplyGap {
public:
    explicit ReplyGap(Micros initial = Micros(0));

    Micros value() const;

    // A reply of so many bytes was taken to end with this part of it, whose last byte came then.
    void ended(const QByteArray& part, int length, Clock::time_point lastByte);
    // Whatever came on the line after that. Only where the reply becomes whole and sound with it
    // was it the rest.
    void came(const QByteArray& bytes, Clock::time_point now);

private:
    Micros gap_;
    QByteArray part_;
    int length_ = 0;
    Clock::time_point lastByte_{};
    Micros pause_{0}; // maximum within this reply
};

} // namespace dov417

#endif
