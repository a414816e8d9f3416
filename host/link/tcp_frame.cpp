#include "link/tcp_frame.h"

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int numberIndex = 0;
constexpr int protocolIndex = 2;
constexpr int lengthIndex = 4;
constexpr int minBody = 3; // station, function, exception code

} // namespace

TcpHeader tcpHeader(const QByteArray& bytes)
{
    TcpHeader header;
    header.number = wordAt(bytes, numberIndex);
    header.length = wordAt(bytes, lengthIndex);
    header.isModbus = wordAt(bytes, protocolIndex) == 0 && header.length >= minBody &&
                      header.length <= maxTcpBody;
    return header;
}

QByteArray tcpFrame(int number, const QByteArray& rtuFrame)
{
    const QByteArray body = rtuFrame.left(rtuFrame.size() - crcLength);
    QByteArray frame;
    appendWord(frame, number);
    appendWord(frame, 0);
    appendWord(frame, static_cast<int>(body.size()));
    return frame + body;
}

} // namespace dov417
