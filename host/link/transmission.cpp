#include "link/transmission.h"

#include "line/frame_text.h"

namespace dov417 {

namespace {

constexpr int functionIndex = 1;
constexpr int exceptionCodeIndex = 2;
constexpr int lastReadFunction = 4;

} // namespace

bool Transmission::isRead() const
{
    return sent.size() > functionIndex && sent.at(functionIndex) >= 1 &&
           sent.at(functionIndex) <= lastReadFunction;
}

std::string Transmission::name() const
{
    return (isRead() ? "read  " : "write ") + description;
}

int exceptionCode(const Reception& reception)
{
    return static_cast<unsigned char>(reception.bytes.at(exceptionCodeIndex));
}

std::string wordsText(const Request& request, int first, int words)
{
    const int from = request.address + first;
    const std::string text = request.regName + ":" + std::to_string(from);
    return words == 1 ? text : text + ".." + std::to_string(from + words - 1);
}

std::string reasonOf(const Reception& reception, int expectedLength)
{
    switch (reception.result) {
    case LineResult::timeout:
        return "no answer";
    case LineResult::exception: {
        const int code = exceptionCode(reception);
        return "exception " + std::to_string(code) + " (" + exceptionName(code) + ")";
    }
    case LineResult::reply:
        if (reception.bytes.size() < expectedLength)
            return "reply cut short: " + std::to_string(reception.bytes.size()) + " of " +
                   std::to_string(expectedLength) + " bytes";
        return "bad CRC";
    case LineResult::broadcast:
        return "nobody answers a broadcast";
    }
    return std::string();
}

} // namespace dov417
