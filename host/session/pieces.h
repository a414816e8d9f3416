// Long addresses in pieces that go through the driver and over the line in one go.
#ifndef DOV417_SESSION_PIECES_H
#define DOV417_SESSION_PIECES_H

#include <vector>

#include "line/failure.h"
#include "link/request_parts.h"
#include "text/addresses.h"

namespace dov417 {

constexpr int maxPlan = 128; // words in one request of the driver's plan

// What the driver is handed as one write: one bit, or words that stay together.
struct Write {
    Address address;
    std::vector<unsigned char> data; // a byte a bit, two bytes a word, low byte first
};

// Bits one at a time, as a run of coil bits goes out without its area's base address. Words in
// pieces of at most the merge gap (below 1: what one write request carries), which the driver would
// cut otherwise, and never within a value. Throws a UsageFailure where the gap cuts even one value.
std::vector<Write> writePieces(const Address& address, const std::vector<unsigned char>& data,
                               int gap);

// Is this what the driver makes one request of, with the bytes that belong to it?
bool isOnePiece(const Write& write, int gap);
bool isOneReadPiece(const Address& words, int gap);

// The words to read once for an address: single reads of bit registers are never framed.
std::vector<Address> readPieces(const Address& address, int gap);

// May the driver be handed this address? It takes any: station 257 goes out as station 1, what lies
// beyond the highest address of its type goes to another area, and at what it cannot make a request
// of it stands still for ever. The broadcast is written to, never read from.
Result usable(const Library& library, const Address& address, Access access);

// What to hand in for an address that is watched. Of a longer one the driver cuts requests itself,
// and then leaves out the words behind a shorter address inside it.
std::vector<Address> watchPieces(const Address& address);

// The words that hold an address, under the name of their area's word type.
Address wordsOf(const Address& address);

} // namespace dov417

#endif
