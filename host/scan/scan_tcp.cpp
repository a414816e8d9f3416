#include "scan/scan_tcp.h"

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "link/tcp_frame.h"

namespace dov417 {

namespace {

constexpr int numbers = 65536;
constexpr int maxStationsAsked = 256; // a number that old is nobody's any more
constexpr int valueLength = 7;        // of the reply to a question for one word

bool hasLengthOfAnAnswer(const QByteArray& frame)
{
    const bool isException = (byteAt(frame, functionIndex) & exceptionFlag) != 0;
    return frame.size() == (isException ? exceptionLength : valueLength);
}

} // namespace

QByteArray ScanTcp::ask(const QByteArray& rtuFrame)
{
    number_ = (number_ + 1) % numbers;
    asked_[number_] = rtuFrame;
    asked_.erase((number_ + numbers - maxStationsAsked) % numbers);
    return tcpFrame(number_, rtuFrame);
}

std::optional<std::vector<ScanReply>> ScanTcp::take(const QByteArray& bytes)
{
    std::vector<ScanReply> replies;
    pending_ += bytes;
    while (pending_.size() >= tcpHeaderLength) {
        const TcpHeader header = tcpHeader(pending_);
        if (!header.isModbus)
            return std::nullopt;
        if (pending_.size() < tcpHeaderLength + header.length)
            break;
        const QByteArray frame = withCrc(pending_.mid(tcpHeaderLength, header.length));
        pending_.remove(0, tcpHeaderLength + header.length);
        replies.push_back({frame, isAnswer(header.number, frame)});
    }
    return replies;
}

bool ScanTcp::isAnswer(int number, const QByteArray& frame)
{
    const auto asked = asked_.find(number);
    if (asked == asked_.end() || stationOf(asked->second) != stationOf(frame) ||
        functionOf(asked->second) != functionOf(frame) || !hasLengthOfAnAnswer(frame))
        return false;
    asked_.erase(asked);
    return true;
}

} // namespace dov417
