// Values as people write them <-> bytes as the library takes and gives them: one byte a bit, two
// bytes a word, low byte first, two words a 32-bit value.
#ifndef DOV417_TEXT_VALUES_H
#define DOV417_TEXT_VALUES_H

#include <optional>
#include <string>
#include <vector>

#include "driver/registers.h"
#include "line/failure.h"

namespace dov417 {

enum class Notation {
    unsignedNumber,
    signedNumber,
    hex,
    bcd,
    real // needs 32 bits
};

// Which word of a 32-bit value has the lower address. The same on every processor.
enum class WordOrder {
    lowFirst, // the driver's own
    highFirst
};

struct Format {
    Notation notation = Notation::unsignedNumber;
    WordOrder order = WordOrder::lowFirst;
};
bool operator==(const Format& a, const Format& b);

// What a tag or a command line says about it; what it leaves open comes from elsewhere.
struct FormatChoice {
    std::optional<Notation> notation;
    std::optional<WordOrder> order;
};

// "unsigned", "signed", "hex", "bcd", "float", each with ":low-first" or ":high-first" appended
// where the word order matters. Empty: no choice. Throws a UsageFailure.
FormatChoice parseFormat(const std::string& text);
WordOrder parseWordOrder(const std::string& text);
const std::vector<std::string>& notationNames();
const std::vector<std::string>& wordOrderNames();

// The first that decides wins; unsigned and low-first if none does.
Format chosenFormat(const FormatChoice& first, const FormatChoice& second);

// Can values of that width be written so? float needs 32 bits.
bool fits(Width width, const Format& format);
// Throws a UsageFailure where not.
void requireFormat(Width width, const Format& format);

// Bytes that `values` values take.
int byteCount(Width width, int values);

// One text a value, from bytes as intf_getData() gives them. A BCD value with a digit above 9 is
// shown as "0x12AF?".
std::vector<std::string> valueTexts(Width width, const Format& format, const unsigned char* bytes,
                                    int values);

// Throws a UsageFailure unless there are as many values as are wanted.
void requireCount(int wanted, const std::vector<std::string>& values);

// Bytes for intf_setData(). Throws a UsageFailure with the text and the range that it misses.
std::vector<unsigned char> valueBytes(Width width, const Format& format,
                                      const std::vector<std::string>& texts);

} // namespace dov417

#endif
