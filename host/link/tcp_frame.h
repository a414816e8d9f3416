// The frames of Modbus TCP: a header of number, protocol and length, then what Modbus RTU has, from
// the station on and without the CRC.
#ifndef DOV417_LINK_TCP_FRAME_H
#define DOV417_LINK_TCP_FRAME_H

#include <QByteArray>

namespace dov417 {

constexpr int tcpHeaderLength = 6;
constexpr int maxTcpBody = 254; // bytes behind the header

struct TcpHeader {
    int number = 0;
    int length = 0; // of what follows
    bool isModbus = false;
};

// Of at least as many bytes as it has. It is none of Modbus if it has another protocol or a length
// that no frame has.
TcpHeader tcpHeader(const QByteArray& bytes);

QByteArray tcpFrame(int number, const QByteArray& rtuFrame);

} // namespace dov417

#endif
