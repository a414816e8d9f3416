#include "text/address_values.h"

#include "text/characters.h"

namespace dov417 {

int byteCount(const Address& address)
{
    // A text is as many words as its address has.
    const bool isText = address.width == Width::text;
    return byteCount(address.width, isText ? address.length : valueCount(address));
}

std::vector<std::string> valueTexts(const Address& address, const Format& format,
                                    const unsigned char* bytes)
{
    if (address.width == Width::text)
        return {charactersText(bytes, address.length, format.byteOrder)};
    return valueTexts(address.width, format, bytes, valueCount(address));
}

std::vector<unsigned char> valueBytes(const Address& address, const Format& format,
                                      const std::vector<std::string>& texts)
{
    requireCount(valueCount(address), texts);
    if (address.width == Width::text)
        return characterBytes(texts.front(), address.length, format.byteOrder);
    return valueBytes(address.width, format, texts);
}

Address valueOf(const Address& address, int index)
{
    Address value = address;
    value.length = unitsOf(address);
    value.first += index * value.length;
    return value;
}

Address asText(const Address& address, const FormatChoice& format)
{
    Address text = address;
    if (format.notation == Notation::text && address.width == Width::word &&
        address.length <= maxWordsOfAText)
        text.width = Width::text;
    return text;
}

} // namespace dov417
