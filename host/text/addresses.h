// Addresses as people type them: [STATION/]REGISTER:FIRST[..LAST], checked by the library.
#ifndef DOV417_TEXT_ADDRESSES_H
#define DOV417_TEXT_ADDRESSES_H

#include <cstddef>
#include <string>

#include "driver/library.h"
#include "driver/registers.h"
#include "line/failure.h"

namespace dov417 {

enum class Access {
    read,
    write
};

// What the library is asked for.
struct Address {
    int station = 1;
    std::string regName;
    Width width = Width::word;
    int first = 0;  // bit number for bit types, else word number
    int length = 1; // bits for bit types, else words
};
bool operator==(const Address& a, const Address& b);

// Bits of a bit type, else words, that each of its values takes.
int unitsOf(const Address& address);
// Of ASCII letters.
std::string inLowerCase(std::string text);

// How many values it names.
int valueCount(const Address& address);

// Why a text is no address that can be used.
class AddressFailure : public UsageFailure {
public:
    // code: the library's check code, checkValid where the text did not get as far as the library.
    AddressFailure(const std::string& text, const std::string& why, std::size_t column,
                   int code = checkValid);
    std::string why;    // the sentence alone
    std::size_t column; // 0-based place in the text
    int code;
};

// The driver takes bit 16 of word 0 for bit 0 of word 1, and words beyond 2^28 go round to small
// ones.
enum class BitNumbers {
    exact,        // refused, as it would be another bit than the one written
    asTheyAreRead // for commands that show what the library answers
};

Address parseAddress(const Library& library, const std::string& text,
                     BitNumbers bitNumbers = BitNumbers::exact);

// The same from the columns of a tag file: one address text, exact, and a number of values.
Address parseAddress(const Library& library, int station, const std::string& regName,
                     const std::string& first, int values);

// "1" to "247", or "0" for the broadcast.
int parseStation(const std::string& text);

// Throws where the address cannot be used so: nothing can be read from the broadcast, and no bit of
// a register can be written as one (the register has to be read first); a type may be read-only.
void requireAccess(const Library& library, const Address& address, Access access);

// In full: "1/R_W:100..107", "2/R_D:10..11", "1/M_bit:1.5".
std::string toText(const Library& library, const Address& address);
// The same for who has asked already how its first unit is written and, of several bits, its last.
std::string toText(const Address& address, const std::string& first, const std::string& lastBit);

// The sentence that belongs to a check code.
std::string checkSentence(const Library& library, int code, const std::string& regName,
                          const std::string& text);

} // namespace dov417

#endif
