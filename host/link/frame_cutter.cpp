#include "link/frame_cutter.h"

#include <algorithm>
#include <array>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int maxPending = 1024;

bool isFrameHead(const QByteArray& begin)
{
    return byteAt(begin, 0) <= maxStation && (begin.size() < 2 || (byteAt(begin, 1) & 0x7F) != 0);
}

// As a request and as a reply.
std::array<int, 3> lengths(const QByteArray& begin)
{
    const bool isException = begin.size() > 1 && byteAt(begin, 1) > 0x7F;
    const int reply = lengthOfReply(begin);
    return {isException ? reply : lengthOfRequest(begin), reply, maxLengthOfReply(begin)};
}

} // namespace

std::vector<Piece> FrameCutter::add(const QByteArray& bytes, Clock::time_point now)
{
    pending_.append(bytes);
    lumps_.push_back({pending(), now});
    return cut(false);
}

std::vector<Piece> FrameCutter::endOfFrame()
{
    return cut(true);
}

bool FrameCutter::isEmpty() const
{
    return pending_.isEmpty();
}

int FrameCutter::pending() const
{
    return static_cast<int>(pending_.size());
}

// Of the sound frame that begins there and whose length is told; 0: there is none.
int FrameCutter::soundLength(int from) const
{
    const QByteArray rest = pending_.mid(from, maxFrameLength);
    if (!isFrameHead(rest))
        return 0;
    for (const int length : lengths(rest))
        if (length >= minFrameLength && length <= rest.size() && hasGoodCrc(rest.left(length)))
            return length;
    return 0;
}

// May what is at the front be a frame that has not come whole?
bool FrameCutter::mayGrow() const
{
    const QByteArray begin = pending_.left(maxFrameLength);
    if (!isFrameHead(begin) || pending() >= maxFrameLength)
        return false;
    const std::array<int, 3> all = lengths(begin);
    return std::any_of(all.begin(), all.end(), [&](int length) {
        return length == notYetTold || length == neverTold || length > begin.size();
    });
}

bool FrameCutter::isSoundToTheEnd(int from) const
{
    while (from < pending()) {
        const int length = soundLength(from);
        if (length == 0) {
            const QByteArray rest = pending_.mid(from);
            return rest.size() <= maxFrameLength && isFrameHead(rest) &&
                   lengthOfRequest(rest) == neverTold && hasGoodCrc(rest);
        }
        from += length;
    }
    return true;
}

// Of a frame that tells no length, at the front of what an adapter handed over at once; 0: none.
int FrameCutter::joinedLength() const
{
    if (!isFrameHead(pending_) || lengthOfRequest(pending_) != neverTold)
        return 0;
    for (int length = minFrameLength; length <= std::min(pending(), maxFrameLength); ++length)
        if (hasGoodCrc(pending_.left(length)) && isSoundToTheEnd(length))
            return length;
    return 0;
}

// How much is to be left out until frames follow, up to the end; 0: none follow.
int FrameCutter::noiseLength() const
{
    for (int from = 1; pending() - from >= minFrameLength; ++from)
        if (isSoundToTheEnd(from))
            return from;
    return 0;
}

std::vector<Piece> FrameCutter::cut(bool isSilent)
{
    std::vector<Piece> pieces;
    while (!pending_.isEmpty()) {
        int length = soundLength(0);
        if (length == 0 && isSoundToTheEnd(0))
            length = pending();
        if (length == 0 && isSilent)
            length = joinedLength();
        if (length > 0) {
            pieces.push_back(take(length, true));
            continue;
        }
        if (mayGrow() && !isSilent)
            break;
        length = noiseLength();
        if (length == 0 && isSilent)
            length = pending();
        if (length == 0 && pending() > maxPending)
            length = maxPending / 2;
        if (length == 0)
            break;
        pieces.push_back(take(length, false));
    }
    return pieces;
}

Piece FrameCutter::take(int length, bool isFrame)
{
    const auto last = std::find_if(lumps_.begin(), lumps_.end(),
                                   [length](const Lump& lump) { return lump.end >= length; });
    Piece piece{pending_.left(length), isFrame, last->at};
    pending_.remove(0, length);
    lumps_.erase(lumps_.begin(), last->end == length ? last + 1 : last);
    for (Lump& lump : lumps_)
        lump.end -= length;
    return piece;
}

} // namespace dov417
