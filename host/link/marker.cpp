#include "link/marker.h"

#include <algorithm>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int markerLength = 8;
constexpr int maxMarkerWords = 15; // there are controllers that take 16
constexpr int maxLonger = 2;       // words

QByteArray echoRequest(char station, unsigned short mark)
{
    QByteArray frame;
    frame.append(station).append(static_cast<char>(diagnostics));
    appendWord(frame, 0);
    appendWord(frame, mark);
    return withCrc(frame);
}

// The same read, some words shorter or longer.
Transmission resized(const Transmission& read, int words)
{
    Transmission other;
    other.request = read.request;
    const int units = words * (functionOf(read.sent) <= readInputs ? bitsPerWord : 1);
    QByteArray frame = read.sent.left(quantityIndex);
    appendWord(frame, wordAt(read.sent, quantityIndex) + units);
    other.sent = withCrc(frame);
    other.replyLength = read.replyLength + 2 * words;
    return other;
}

// Of nothing, where it is written; resized it is one of some words.
Transmission readOfWritten(const Transmission& write)
{
    const int function = functionOf(write.sent);
    const bool hasAddress =
        isCoils(function) || function == writeRegister || function == writeRegisters;
    QByteArray frame = write.sent.left(1);
    frame.append(static_cast<char>(isCoils(function) ? readCoils : readRegisters));
    appendWord(frame, hasAddress ? wordAt(write.sent, addressIndex) : 0);
    appendWord(frame, 0);
    Transmission read;
    read.request.station = write.request.station;
    read.sent = withCrc(frame);
    read.replyLength = exceptionLength; // and so many bytes as are asked for
    return read;
}

} // namespace

bool isEcho(const QByteArray& frame)
{
    return functionOf(frame) == diagnostics;
}

Transmission makeMarker(const Transmission& asked, const Books& books,
                        const OpenTransmission& answered, MarkerKind kind,
                        unsigned short& nextNumber)
{
    Transmission marker;
    const bool isRead = isReadFunction(functionOf(asked.sent)) && asked.replyLength != untoldLength;
    const Transmission request =
        isRead || kind != MarkerKind::readAlso ? asked : readOfWritten(asked);
    if (kind == MarkerKind::echo) {
        marker.sent = echoRequest(request.sent.at(0), nextNumber++);
        marker.replyLength = markerLength;
    } else if (isRead || kind == MarkerKind::readAlso) {
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
        // What lies behind may not be there.
        const int longest = kind == MarkerKind::readOfProbe ? std::max(maxMarkerWords, length)
                                                            : std::max(1, length) + maxLonger;
        for (int words = length + 1; words <= longest; ++words)
            take(words - length);
    }
    marker.isMarker = true;
    marker.request.station = stationOf(request.sent);
    return marker;
}

} // namespace dov417
