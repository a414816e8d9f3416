// What a frame says by itself: length and its meaning in words.
#include "line/frame_bytes.h"
#include "simulator/controller.h"

namespace dov417::simulator {

namespace {

std::string runText(const std::string& unit, int first, int count)
{
    if (count <= 1)
        return unit + " " + std::to_string(first);
    return unit + "s " + std::to_string(first) + " to " + std::to_string(first + count - 1);
}

std::string requestText(const Answer& answer)
{
    switch (answer.function) {
    case 1:
        return "reads " + runText("coil", answer.address, answer.count);
    case 3:
        return "reads " + runText("register", answer.address, answer.count);
    case 5:
    case 15:
        return "writes " + runText("coil", answer.address, answer.count);
    case 6:
    case 16:
        return "writes " + runText("register", answer.address, answer.count);
    default:
        return "function " + std::to_string(answer.function);
    }
}

} // namespace

int requestLength(const QByteArray& begin)
{
    if (begin.size() < 2)
        return -1;
    switch (byteAt(begin, 1)) {
    case 1:
    case 3:
    case 5:
    case 6:
    case 8:
        return 8; // station, function, address or sub-function, quantity or value, CRC
    case 15:
    case 16:
        break;
    default:
        return 0;
    }
    if (begin.size() < 7)
        return -1;
    const int quantity = byteAt(begin, 4) * 256 + byteAt(begin, 5);
    const int bytes = byteAt(begin, 1) == 15 ? (quantity + 7) / 8 : 2 * quantity;
    // One byte counts them; 256 data bytes are counted as 0.
    return (bytes & 0xFF) == byteAt(begin, 6) ? 9 + bytes : 0;
}

const char* exceptionName(int code)
{
    switch (code) {
    case 1:
        return "illegal function";
    case 2:
        return "illegal data address";
    case 3:
        return "illegal data value";
    case 4:
        return "server device failure";
    case 6:
        return "server device busy";
    default:
        return "unknown exception";
    }
}

std::string describe(const Answer& answer)
{
    if (answer.outcome == Outcome::badFrame)
        return "no frame: too short or wrong CRC";
    std::string text =
        answer.station == 0 ? "broadcast " : "station " + std::to_string(answer.station) + " ";
    text += requestText(answer);
    if (answer.outcome == Outcome::otherStation)
        text += ": not here";
    if (answer.exception != 0)
        text += ": exception " + std::to_string(answer.exception) + ", " +
                exceptionName(answer.exception);
    return text;
}

} // namespace dov417::simulator
