// How values are written.
#ifndef DOV417_TEXT_FORMATS_H
#define DOV417_TEXT_FORMATS_H

#include <optional>
#include <string>
#include <vector>

#include "driver/registers.h"
#include "line/failure.h"

namespace dov417 {

// A text of more would not fit one request, with which it is written whole.
constexpr int maxWordsOfAText = 120;

enum class Notation {
    unsignedNumber,
    signedNumber,
    hex,
    bcd,
    real,  // needs 32 bits
    int64, // this and the next two need four words
    uint64,
    real64,
    boolean,
    binary,
    text // needs a range of words
};

// Which word of a longer value has the lowest address: its low one, or its high one. The same on
// every processor.
enum class WordOrder {
    lowFirst, // the driver's own
    highFirst
};

// What a controller's number means: number * scale + offset, in the unit, with so many decimals.
struct Scaling {
    double scale = 1;
    double offset = 0;
    int decimals = -1; // as many as it takes
    std::string unit;

    bool isPlain() const // but for the unit
    {
        return scale == 1 && offset == 0 && decimals < 0;
    }
};

struct Format {
    Notation notation = Notation::unsignedNumber;
    WordOrder order = WordOrder::lowFirst;
    Scaling scaling = {}; // of numbers: all else shows what the controller holds
    WordOrder byteOrder = WordOrder::highFirst; // of texts: which half of a word comes first
};
bool operator==(const Format& a, const Format& b);

// What a tag or a command line says about it; what it leaves open comes from elsewhere.
struct FormatChoice {
    std::optional<Notation> notation;
    std::optional<WordOrder> order;
    std::optional<WordOrder> byteOrder = {};
};

// One of notationNames(), each with ":low-first" or ":high-first" appended where the word order
// matters, or for a text that of a word's characters. Empty: no choice. Throws a UsageFailure.
FormatChoice parseFormat(const std::string& text);
// What parseFormat() reads as that: "float", "float:high-first".
std::string formatText(const Format& format);
WordOrder parseWordOrder(const std::string& text);
const std::vector<std::string>& notationNames();
const std::vector<std::string>& wordOrderNames();

// The first that decides wins; unsigned and low-first if none does, and a text's high byte first,
// as it comes over the line.
Format chosenFormat(const FormatChoice& first, const FormatChoice& second);

// Is it a number that can be scaled?
bool isNumber(Notation notation);
// Does it take two double words for one value?
bool needsFourWords(const FormatChoice& choice);

// Can values of that width be written so?
bool fits(Width width, const Format& format);
// Throws a UsageFailure where not.
void requireFormat(Width width, const Format& format);

// For people: the value and its unit.
std::string withUnit(const std::string& text, const Format& format);

} // namespace dov417

#endif
