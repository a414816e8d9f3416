#include "link/marker.h"

#include <algorithm>

#include "line/crc16.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr char diagnostics = 8; // function; sub-function 0 sends back what it was sent
constexpr char exceptionFlag = '\x80';
constexpr int markerLength = 8;
constexpr int maxMarkerWords = 15; // there are controllers that take 16
constexpr int maxLonger = 2;       // words
constexpr int quantityIndex = 4;
constexpr int coilsPerWord = 16;
constexpr char lastBitRead = 2; // coils, inputs
constexpr char lastReadFunction = 4;

QByteArray echoRequest(char station, unsigned short mark)
{
    QByteArray frame;
    frame.append(station).append(diagnostics).append('\0').append('\0');
    frame.append(static_cast<char>(mark >> 8)).append(static_cast<char>(mark & 0xFF));
    return withCrc(frame);
}

// The same read, some words shorter or longer.
Transmission resized(const Transmission& read, int words)
{
    Transmission other;
    other.request = read.request;
    const int units = words * (read.sent.at(1) <= lastBitRead ? coilsPerWord : 1);
    const int quantity = static_cast<unsigned char>(read.sent.at(quantityIndex)) * 256 +
                         static_cast<unsigned char>(read.sent.at(quantityIndex + 1)) + units;
    QByteArray frame = read.sent.left(quantityIndex);
    frame.append(static_cast<char>(quantity >> 8)).append(static_cast<char>(quantity & 0xFF));
    other.sent = withCrc(frame);
    other.replyLength = read.replyLength + 2 * words;
    return other;
}

} // namespace

bool isEcho(const QByteArray& frame)
{
    return (frame.at(1) & ~exceptionFlag) == diagnostics;
}

Transmission makeMarker(const Transmission& request, const Books& books,
                        const OpenTransmission& answered, bool mayEcho, unsigned short& nextNumber)
{
    Transmission marker;
    if (mayEcho) {
        marker.sent = echoRequest(request.sent.at(0), nextNumber++);
        marker.replyLength = markerLength;
    } else if (request.sent.at(1) <= lastReadFunction && request.replyLength != untoldLength) {
        const auto take = [&](int more) {
            const Transmission other = resized(request, more);
            const bool isLikeAnswered = answered.sent.left(2) == other.sent.left(2) &&
                                        answered.replyLength == other.replyLength;
            if (marker.replyLength == 0 && !isLikeAnswered &&
                !books.isOut(other.sent, other.replyLength))
                marker = other;
        };
        // Short, as the station may be one that takes no more; a single word is what others read.
        const int length = request.request.length;
        for (int words = std::min(length - 1, maxMarkerWords); words > 0; --words)
            take(words - length);
        for (int words = maxMarkerWords + 1; words < length; ++words)
            take(words - length);
        for (int more = 1; more <= maxLonger; ++more) // what lies behind may not be there
            take(more);
    }
    marker.isMarker = true;
    marker.request.station = static_cast<unsigned char>(request.sent.at(0));
    return marker;
}

} // namespace dov417
