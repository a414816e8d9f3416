#include "link/tcp_frame.h"

namespace dov417 {

namespace {

constexpr int numberIndex = 0;
constexpr int protocolIndex = 2;
constexpr int lengthIndex = 4;
constexpr int minBody = 3; // station, function, exception code
constexpr int crcLength = 2;

int numberAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index)) * 256 +
           static_cast<unsigned char>(bytes.at(index + 1));
}

void append(QByteArray& bytes, int number)
{
    bytes.append(static_cast<char>(number >> 8)).append(static_cast<char>(number & 0xFF));
}

} // namespace

TcpHeader tcpHeader(const QByteArray& bytes)
{
    TcpHeader header;
    header.number = numberAt(bytes, numberIndex);
    header.length = numberAt(bytes, lengthIndex);
    header.isModbus = numberAt(bytes, protocolIndex) == 0 && header.length >= minBody &&
                      header.length <= maxTcpBody;
    return header;
}

QByteArray tcpFrame(int number, const QByteArray& rtuFrame)
{
    const QByteArray body = rtuFrame.left(rtuFrame.size() - crcLength);
    QByteArray frame;
    append(frame, number);
    append(frame, 0);
    append(frame, static_cast<int>(body.size()));
    return frame + body;
}

} // namespace dov417
