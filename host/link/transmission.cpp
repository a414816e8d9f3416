#include "link/transmission.h"

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

bool Transmission::isRead() const
{
    return sent.size() > functionIndex && isReadFunction(functionOf(sent));
}

std::string Transmission::name() const
{
    return (isRead() ? "read  " : "write ") + description;
}

bool isSound(const Reception& reception)
{
    return reception.result == LineResult::exception ||
           (reception.result == LineResult::reply && hasGoodCrc(reception.bytes));
}

int exceptionCode(const Reception& reception)
{
    return static_cast<unsigned char>(reception.bytes.at(exceptionCodeIndex));
}

bool isOfStation(const Reception& reception)
{
    if (reception.result != LineResult::exception || reception.bytes.size() < exceptionLength)
        return isSound(reception);
    return !isOfGateway(exceptionCode(reception));
}

std::string answeredOtherwise(const Transmission& write)
{
    constexpr int valueEnd = 6; // of the value, or of the quantity
    const QByteArray& reply = write.reception.bytes;
    const int function = functionOf(write.sent);
    if (write.isRead() || write.reception.result != LineResult::reply || reply.size() < valueEnd ||
        reply.left(valueEnd) == write.sent.left(valueEnd))
        return std::string();
    const int said = wordAt(reply, addressEnd);
    const bool isValue = function == writeCoil || function == writeRegister;
    return std::string("it was answered with another ") + (isValue ? "value: " : "quantity: ") +
           std::to_string(function == writeCoil && said != 0 ? 1 : said);
}

std::string wordsText(const Request& request, int first, int words)
{
    const int from = request.address + first;
    const std::string text = request.regName + ":" + std::to_string(from);
    return words == 1 ? text : text + ".." + std::to_string(from + words - 1);
}

std::string whyOf(const Transmission& transmission)
{
    return transmission.why == Reason::none ? std::string() : keyOf(transmission.why);
}

Reason reasonOf(const Reception& reception, int expectedLength)
{
    switch (reception.result) {
    case LineResult::timeout:
        return reception.astray.frame != Reason::none ? reception.astray.frame
               : reception.astray.noise > 0           ? Reason::noFrame
                                                      : Reason::silence;
    case LineResult::heldBack:
        return Reason::heldBack;
    case LineResult::exception:
        return Reason::exception;
    case LineResult::reply:
        return expectedLength != untoldLength && reception.bytes.size() < expectedLength
                   ? Reason::cutShort
                   : Reason::badCrc;
    case LineResult::broadcast:
        return Reason::broadcast;
    }
    return Reason::none;
}

std::string reasonText(const Reception& reception, int expectedLength, const std::string& within)
{
    const Astray& astray = reception.astray;
    const std::string none = "no answer" + within + ": ";
    const std::string from = " (" + std::to_string(astray.from) + ")";
    switch (reasonOf(reception, expectedLength)) {
    case Reason::none:
        return std::string();
    case Reason::silence:
        return none + "no byte came";
    case Reason::noFrame:
        return none + std::to_string(astray.noise) + (astray.noise == 1 ? " byte" : " bytes") +
               " came, but no frame" +
               (astray.lineWasSound ? "" : "; looks like another speed or parity");
    case Reason::otherStation:
        return none + "another station answered" + from;
    case Reason::otherFunction:
        return none + "another function was answered" + from;
    case Reason::otherRequest:
        return none + "another request was answered";
    case Reason::late:
        return none + "only a late reply to an earlier request came";
    case Reason::heldBack:
        return "held back: a late reply could be taken for its own";
    case Reason::badCrc:
        return "bad CRC";
    case Reason::cutShort: {
        const bool isOwn = reception.result == LineResult::reply;
        return "reply cut short: " +
               std::to_string(isOwn ? static_cast<int>(reception.bytes.size()) : astray.from) +
               " of " + std::to_string(isOwn ? expectedLength : astray.due) + " bytes";
    }
    case Reason::exception: {
        const int code = exceptionCode(reception);
        return "exception " + std::to_string(code) + " (" + exceptionName(code) + ")";
    }
    case Reason::broadcast:
        return "nobody answers a broadcast";
    }
    return std::string();
}

} // namespace dov417
