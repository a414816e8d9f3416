#include "text/formats.h"

#include <tuple>

namespace dov417 {

namespace {

const std::string suffix = ":";

bool isFourWords(Notation notation)
{
    return notation == Notation::int64 || notation == Notation::uint64 ||
           notation == Notation::real64;
}

template <typename Names>
int indexOf(const Names& names, const std::string& name)
{
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == name)
            return static_cast<int>(i);
    return -1;
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

} // namespace

bool operator==(const Format& a, const Format& b)
{
    const auto parts = [](const Format& format) {
        const Scaling& scaling = format.scaling;
        return std::tie(format.notation, format.order, scaling.scale, scaling.offset,
                        scaling.decimals, scaling.unit, format.byteOrder);
    };
    return parts(a) == parts(b);
}

const std::vector<std::string>& notationNames()
{
    static const std::vector<std::string> names = {"unsigned", "signed", "hex",    "bcd",
                                                   "float",    "int64",  "uint64", "double",
                                                   "bool",     "binary", "text"};
    return names;
}

const std::vector<std::string>& wordOrderNames()
{
    static const std::vector<std::string> names = {"low-first", "high-first"};
    return names;
}

std::string formatText(const Format& format)
{
    const bool isText = format.notation == Notation::text;
    const WordOrder order = isText ? format.byteOrder : format.order;
    const WordOrder usual = isText ? Format().byteOrder : Format().order;
    const std::string name = notationNames().at(static_cast<std::size_t>(format.notation));
    return order == usual ? name
                          : name + ":" + wordOrderNames().at(static_cast<std::size_t>(order));
}

WordOrder parseWordOrder(const std::string& text)
{
    const int index = indexOf(wordOrderNames(), text);
    if (index < 0)
        throw UsageFailure("unknown word order '" + text + "'; there are " +
                           joined(wordOrderNames()));
    return static_cast<WordOrder>(index);
}

FormatChoice parseFormat(const std::string& text)
{
    FormatChoice choice;
    if (text.empty())
        return choice;
    const std::size_t colon = text.find(suffix);
    const int index = indexOf(notationNames(), text.substr(0, colon));
    if (index < 0)
        throw UsageFailure("unknown format '" + text.substr(0, colon) + "'; there are " +
                           joined(notationNames()));
    choice.notation = static_cast<Notation>(index);
    if (colon != std::string::npos)
        (choice.notation == Notation::text ? choice.byteOrder : choice.order) =
            parseWordOrder(text.substr(colon + suffix.size()));
    return choice;
}

Format chosenFormat(const FormatChoice& first, const FormatChoice& second)
{
    const Format byDefault;
    Format format;
    format.notation = first.notation.value_or(second.notation.value_or(byDefault.notation));
    format.order = first.order.value_or(second.order.value_or(byDefault.order));
    format.byteOrder = first.byteOrder.value_or(second.byteOrder.value_or(byDefault.byteOrder));
    return format;
}

bool isNumber(Notation notation)
{
    return notation != Notation::hex && notation != Notation::binary &&
           notation != Notation::boolean && notation != Notation::text;
}

bool needsFourWords(const FormatChoice& choice)
{
    return choice.notation && isFourWords(*choice.notation);
}

bool fits(Width width, const Format& format)
{
    if (width == Width::text || format.notation == Notation::text)
        return width == Width::text && format.notation == Notation::text;
    if (format.notation == Notation::real)
        return width == Width::doubleWord;
    if (width == Width::quadWord)
        return isFourWords(format.notation) || format.notation == Notation::hex ||
               format.notation == Notation::binary;
    return !isFourWords(format.notation);
}

void requireFormat(Width width, const Format& format)
{
    if (fits(width, format))
        return;
    const std::string name = notationNames().at(static_cast<std::size_t>(format.notation));
    if (format.notation == Notation::text)
        throw UsageFailure(name + " needs a word register, at most " +
                           std::to_string(maxWordsOfAText) + " words of it");
    throw UsageFailure(
        name + (width == Width::text           ? " does not fit a text"
                : isFourWords(format.notation) ? " needs four words of a double word register"
                : width == Width::quadWord     ? " does not fit values of four words"
                                               : " needs the 32 bits of a double word register"));
}

std::string withUnit(const std::string& text, const Format& format)
{
    return format.scaling.unit.empty() ? text : text + " " + format.scaling.unit;
}

} // namespace dov417
