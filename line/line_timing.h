// How long bytes take on a serial line, in nanoseconds.
#ifndef DOV417_LINE_LINE_TIMING_H
#define DOV417_LINE_LINE_TIMING_H

#include <QString>
#include <cstdint>
#include <optional>

namespace dov417::simulator {

enum class Parity {
    none,
    even,
    odd
};

struct LineSettings {
    int baudRate = 38400;
    int dataBits = 8;
    Parity parity = Parity::even;
    int stopBits = 1;
};

// "38400,8,EVEN,1" (NONE, EVEN, ODD; any case; N, E, O). Nothing, and a sentence in `error`, when
// the text is no line.
std::optional<LineSettings> parseLineSettings(const QString& text, QString* error);
QString lineSettingsText(const LineSettings& line);

// Start bit, data bits, parity bit if any, stop bits: 11 for 8 data bits, even parity, 1 stop bit.
int bitsPerCharacter(const LineSettings& line);

// Rounded up to whole nanoseconds for the sum, so that long frames gather no error:
// 13 characters of 11 bits at 38400 baud take 3 723 959 ns.
std::int64_t characterTime(const LineSettings& line, std::int64_t characters);

// The silence that ends a frame: 3.5 characters, above 19200 baud 1.75 ms.
std::int64_t frameSilence(const LineSettings& line);

// When bytes pass a line that carries one at a time. Times are nanoseconds of any one clock.
class WireClock {
public:
    explicit WireClock(const LineSettings& line);

    // Puts a run of characters on the line no earlier than `now`, behind those already on it;
    // gives the time at which the last of them has passed.
    std::int64_t transmit(std::int64_t now, std::int64_t characters);
    // When the last character of the latest run has passed.
    std::int64_t freeAt() const;
    // When character `index` (from 0) of the latest run has passed.
    std::int64_t passedAt(std::int64_t index) const;

private:
    LineSettings m_line;
    std::int64_t m_runStart = 0;
    std::int64_t m_runLength = 0; // characters
};

} // namespace dov417::simulator

#endif
