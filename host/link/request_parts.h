// A request that is longer than a controller takes, cut into parts, and their replies joined into
// the one that the driver expects.
//
// Lengths are in words; a word of coils is sixteen of them.
#ifndef DOV417_LINK_REQUEST_PARTS_H
#define DOV417_LINK_REQUEST_PARTS_H

#include <QByteArray>
#include <functional>
#include <vector>

namespace dov417 {

// What one request of the Modbus protocol carries.
constexpr int maxWordsOfARead = 125;
constexpr int maxWordsOfAWrite = 123;

// For the maximum of words in one request.
constexpr int learnedMaximum = 0; // as each station shows it
constexpr int noMaximum = 128;    // as many as the driver asks for

// May a request be cut in two so that the second part begins with its word number `word`, from 1?
using MayCut = std::function<bool(int word)>;

// Words that a frame asks for or carries; 0 of one that cannot be cut: a single coil or register,
// or coils that are no whole words.
int wordsIn(const QByteArray& request);
bool isWrite(const QByteArray& request);
bool isOfCoils(const QByteArray& request);

// Lengths of the parts: as few as can be, none longer than maximum, the longer ones first, and no
// length twice where another makes no more parts, so that their replies cannot be mistaken for each
// other. Empty if it cannot be cut so.
std::vector<int> partLengths(int words, int maximum, const MayCut& mayCut);

// The frame for so many of its words, from the one number `first`.
QByteArray partOf(const QByteArray& request, int first, int words);
// Bytes of the reply to a part of so many words of this request.
int partReplyLength(const QByteArray& request, int words);

// The reply to the whole request, from the sound replies to all its parts in their order. Of more
// than 255 bytes of data it counts the low eight bits, as the controllers do that take so many.
QByteArray joinedReply(const QByteArray& request, const std::vector<QByteArray>& replies);

} // namespace dov417

#endif
