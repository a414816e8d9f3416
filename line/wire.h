// How long things take on the wire: characters, silences, whole transactions.
#ifndef DOV417_LINE_WIRE_H
#define DOV417_LINE_WIRE_H

#include <chrono>
#include <string>

#include "driver/library.h"

namespace dov417 {

// "38400,8,EVEN,1": baud rate, data bits, parity, stop bits.
struct WireFormat {
    int baudRate = 38400;
    int dataBits = 8;
    char parity = 'E'; // 'N', 'O' or 'E'
    int stopBits = 1;

    int bitsPerCharacter() const; // start bit and parity included

    // Time of so many characters on the wire, rounded to the nearest microsecond.
    std::chrono::microseconds characters(double count) const;

    // Between two frames: 3.5 characters, above 19200 baud 1.75 ms.
    std::chrono::microseconds silence() const;

    // One request and its reply: the characters, two silences, and what the controller takes
    // before it answers (0 for replyLength: a broadcast, where that is the time to digest it).
    std::chrono::microseconds transaction(int sendLength, int replyLength,
                                          std::chrono::microseconds turnaround) const;
};

// Throws a UsageFailure that names the part that is wrong.
WireFormat parseWireFormat(const std::string& text);
std::string toText(const WireFormat& format);

// The line parameters that the library reports as its own.
std::string defaultLine(const Library& library);

} // namespace dov417

#endif
