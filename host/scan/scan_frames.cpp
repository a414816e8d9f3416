#include "scan/scan_frames.h"

#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int replyToAWord = 7; // station, function, count, two bytes, CRC
constexpr int replyWithoutData = 5;
constexpr int countIndex = 2;
constexpr int flood = 1024; // bytes without a pause, among which there is no answer

} // namespace

QByteArray ScanQuestion::frameTo(int station) const
{
    return withCrc(QByteArray(1, static_cast<char>(station)) + body);
}

ScanQuestion readOf(const Area& area, int first, int words)
{
    const int unitsPerWord = area.coils ? bitsPerWord : 1;
    ScanQuestion question;
    question.body.append(static_cast<char>(area.coils ? readCoils : readRegisters));
    appendWord(question.body, area.base + first * unitsPerWord);
    appendWord(question.body, words * unitsPerWord);
    question.replyLength = replyWithoutData + 2 * words;
    return question;
}

ScanQuestions questionsFrom(const std::vector<Area>& areas)
{
    for (const Area& area : areas)
        if (area.coils != areas.front().coils)
            return {readOf(areas.front(), 0, 1), readOf(area, 0, 1)};
    throw Failure("the library reads all areas with one function: a scan needs two");
}

ScanEar::ScanEar(const ScanQuestions& questions, bool behindGateway)
    : questions_(questions), behindGateway_(behindGateway)
{
}

void ScanEar::asks(const QByteArray& frame)
{
    echo_ = frame;
}

void ScanEar::add(const QByteArray& bytes)
{
    pending_.append(bytes);
}

bool ScanEar::isEmpty() const
{
    return pending_.isEmpty();
}

// False while it may still become one. No answer to a read is equal to the request.
bool ScanEar::dropEcho(bool isSilent)
{
    if (echo_.isEmpty() || pending_.isEmpty())
        return true;
    if (pending_.startsWith(echo_)) {
        pending_.remove(0, echo_.size());
        echo_.clear();
        return true;
    }
    return isSilent || !echo_.startsWith(pending_);
}

std::optional<ScanPiece> ScanEar::answerAt(int first) const
{
    const QByteArray frame = pending_.mid(first, replyToAWord);
    if (frame.size() < exceptionLength || stationOf(frame) == broadcastStation ||
        stationOf(frame) > maxStation)
        return std::nullopt;
    for (std::size_t i = 0; i < questions_.size(); ++i) {
        const ScanQuestion& question = questions_.at(i);
        const int function = byteAt(question.body, 0);
        const bool isException = byteAt(frame, functionIndex) == (function | exceptionFlag);
        const int length = isException ? exceptionLength : question.replyLength;
        const bool isValue = byteAt(frame, functionIndex) == function &&
                             byteAt(frame, countIndex) == question.replyLength - replyWithoutData;
        if ((!isException && !isValue) || frame.size() < length || !hasGoodCrc(frame.left(length)))
            continue;
        const bool isAbsent =
            behindGateway_ && isException && isOfGateway(byteAt(frame, exceptionCodeIndex));
        return ScanPiece{isAbsent ? ScanPiece::absent : ScanPiece::answer, frame.left(length),
                         stationOf(frame), i};
    }
    return std::nullopt;
}

// Of any sound frame at the front; 0: there is none.
int ScanEar::soundLength() const
{
    for (int length = minFrameLength; length <= pending_.size() && length <= maxFrameLength;
         ++length)
        if (hasGoodCrc(pending_.left(length)))
            return length;
    return 0;
}

ScanPiece ScanEar::cut(int length, ScanPiece::Kind kind)
{
    ScanPiece piece;
    piece.kind = kind;
    piece.bytes = pending_.left(length);
    if (kind == ScanPiece::foreign)
        piece.station = stationOf(piece.bytes);
    pending_.remove(0, length);
    return piece;
}

std::optional<ScanPiece> ScanEar::take(bool isSilent)
{
    if (!dropEcho(isSilent) || pending_.isEmpty())
        return std::nullopt;
    for (int first = 0; first + exceptionLength <= pending_.size(); ++first) {
        std::optional<ScanPiece> found = answerAt(first);
        if (!found)
            continue;
        if (first > 0)
            return cut(first,
                       hasGoodCrc(pending_.left(first)) ? ScanPiece::foreign : ScanPiece::noise);
        pending_.remove(0, found->bytes.size());
        return found;
    }
    if (!isSilent && pending_.size() < flood)
        return std::nullopt;
    const int length = soundLength();
    return length > 0 ? cut(length, ScanPiece::foreign)
                      : cut(static_cast<int>(pending_.size()), ScanPiece::noise);
}

} // namespace dov417
