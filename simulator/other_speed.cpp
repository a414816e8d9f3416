#include "simulator/other_speed.h"

#include <cstdint>
#include <vector>

namespace dov417::simulator {

namespace {

// The line's levels, a bit each: start bit 0, data with the lowest bit first, parity, stop bits 1.
std::vector<bool> levelsOf(const QByteArray& bytes, const SerialFormat& format)
{
    std::vector<bool> levels;
    for (const char byte : bytes) {
        levels.push_back(false);
        bool isOdd = false;
        for (int bit = 0; bit < format.dataBits; ++bit) {
            levels.push_back((static_cast<unsigned char>(byte) >> bit & 1) != 0);
            isOdd = isOdd != levels.back();
        }
        if (format.parity != Parity::none)
            levels.push_back(isOdd == (format.parity == Parity::even));
        for (int bit = 0; bit < format.stopBits; ++bit)
            levels.push_back(true);
    }
    return levels;
}

} // namespace

QByteArray heardAs(const SerialFormat& own, const QByteArray& bytes, const SerialFormat& sent)
{
    const std::vector<bool> levels = levelsOf(bytes, sent);
    // Time in parts of which `sent.baudRate` make a bit of the receiver and twice `own.baudRate`
    // one of the sender: all edges and middles are whole numbers.
    const std::int64_t senderBit = std::int64_t{2} * own.baudRate;
    const std::int64_t receiverBit = std::int64_t{2} * sent.baudRate;
    const auto end = static_cast<std::int64_t>(levels.size()) * senderBit;
    const auto levelAt = [&](std::int64_t time) {
        return time >= end || levels.at(static_cast<std::size_t>(time / senderBit));
    };
    const auto nextEdge = [&](std::int64_t time) { return (time / senderBit + 1) * senderBit; };

    QByteArray heard;
    for (std::int64_t time = 0; time < end;) {
        if (levelAt(time)) { // no start bit yet
            time = nextEdge(time);
            continue;
        }
        std::int64_t middle = time + receiverBit / 2;
        int byte = 0;
        for (int bit = 0; bit < own.dataBits; ++bit) {
            middle += receiverBit;
            byte |= levelAt(middle) ? 1 << bit : 0;
        }
        heard.append(static_cast<char>(byte));
        // The middle of the stop bit; where there is none, the line has to rise first.
        time = middle + receiverBit * (own.parity == Parity::none ? 1 : 2);
        while (!levelAt(time))
            time = nextEdge(time);
    }
    return heard;
}

} // namespace dov417::simulator
