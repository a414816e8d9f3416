#include "text/characters.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr char firstPrintable = ' ';
constexpr char lastPrintable = '~';
constexpr std::size_t hexDigits = 2;

bool isPrintable(char c)
{
    return c >= firstPrintable && c <= lastPrintable;
}

// The driver hands words over low byte first.
std::size_t placeOf(std::size_t character, WordOrder byteOrder)
{
    return byteOrder == WordOrder::lowFirst ? character : character ^ 1U;
}

std::string escaped(char c)
{
    if (c == '"' || c == '\\')
        return {'\\', c};
    if (isPrintable(c))
        return std::string(1, c);
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02X",
                  static_cast<unsigned>(static_cast<unsigned char>(c)));
    return text;
}

[[noreturn]] void refuseText(const std::string& text, const std::string& why)
{
    throw UsageFailure("text '" + text + "': " + why);
}

std::string unescaped(const std::string& text)
{
    const std::string inner = withoutQuotes(text);
    std::string characters;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        const char c = inner.at(i);
        if (!isPrintable(c))
            refuseText(text,
                       "what is no printable ASCII character is written as its byte, as in \\xE9");
        if (c != '\\') {
            characters += c;
            continue;
        }
        const char next = i + 1 < inner.size() ? inner.at(i + 1) : '\0';
        unsigned char byte = 0;
        const char* const digits = inner.data() + std::min(i + 2, inner.size());
        const char* const end = inner.data() + std::min(i + 2 + hexDigits, inner.size());
        const bool isByte = next == 'x' && end - digits == hexDigits &&
                            std::from_chars(digits, end, byte, 16).ptr == end;
        if (!isByte && next != '"' && next != '\\')
            refuseText(text,
                       "a backslash is written \\\\, a quote \\\", a byte \\x and two hex digits");
        characters += isByte ? static_cast<char>(byte) : next;
        i += isByte ? 1 + hexDigits : 1;
    }
    return characters;
}

} // namespace

std::string charactersText(const unsigned char* bytes, int words, WordOrder byteOrder)
{
    std::string characters(static_cast<std::size_t>(words) * bytesPerWord, '\0');
    for (std::size_t i = 0; i < characters.size(); ++i)
        characters.at(i) = static_cast<char>(bytes[placeOf(i, byteOrder)]);
    characters.erase(characters.find_last_not_of('\0') + 1);
    std::string text = "\"";
    for (const char c : characters)
        text += escaped(c);
    return text + "\"";
}

std::vector<unsigned char> characterBytes(const std::string& text, int words, WordOrder byteOrder)
{
    const std::string characters = unescaped(text);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(words) * bytesPerWord);
    if (characters.size() > bytes.size())
        refuseText(text, std::to_string(characters.size()) + " characters, and there is room for " +
                             std::to_string(bytes.size()));
    for (std::size_t i = 0; i < characters.size(); ++i)
        bytes.at(placeOf(i, byteOrder)) = static_cast<unsigned char>(characters.at(i));
    return bytes;
}

std::string withoutQuotes(const std::string& valueText)
{
    const bool isQuoted =
        valueText.size() >= 2 && valueText.front() == '"' && valueText.back() == '"';
    return isQuoted ? valueText.substr(1, valueText.size() - 2) : valueText;
}

} // namespace dov417
