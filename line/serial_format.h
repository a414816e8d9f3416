// What both ends of a serial line are set to, and how long things take there.
#ifndef DOV417_LINE_SERIAL_FORMAT_H
#define DOV417_LINE_SERIAL_FORMAT_H

#include <chrono>
#include <cstdint>
#include <string>

namespace dov417 {

enum class Parity : char { // the letter that stands for it
    none = 'N',
    even = 'E',
    odd = 'O'
};

// "38400,8,EVEN,1": baud rate, data bits, parity, stop bits.
struct SerialFormat {
    int baudRate = 38400;
    int dataBits = 8;
    Parity parity = Parity::even;
    int stopBits = 1;

    // Start bit, data bits, parity bit if any, stop bits: 11 for 8 data bits, even parity and one
    // stop bit.
    int bitsPerCharacter() const;

    // Time of so many characters on the wire. Rounded up to whole nanoseconds once, for the sum:
    // 13 characters of 11 bits at 38400 baud take 3 723 959 ns.
    std::chrono::nanoseconds characters(std::int64_t count) const;

    // What has to pass between two frames without a byte: 3.5 characters, above 19200 baud 1.75 ms.
    std::chrono::nanoseconds interFrameDelay() const;

    // One request and its reply: the characters, an inter-frame delay before each, and what the
    // controller takes before it answers (0 for replyLength: a broadcast, where that is the time to
    // digest it).
    std::chrono::nanoseconds transaction(int sendLength, int replyLength,
                                         std::chrono::nanoseconds responseTime) const;
};

// Both take NONE, EVEN and ODD in any case, or the letter alone, and throw a UsageFailure that
// names the part that is wrong. Modbus RTU fills bytes of eight bits; the simulated controller may
// be set to seven, as a device in the field may be by mistake.
SerialFormat parseRtuFormat(const std::string& text);    // 8 data bits
SerialFormat parseSerialFormat(const std::string& text); // 7 or 8

std::string toText(const SerialFormat& format);

} // namespace dov417

#endif
