// The table of unit widths. A file of its own: it names functions of all the rooms that read it.
#include "cache/change_notifiers.h"
#include "cache/pending_values.h"
#include "cache/reading_values.h"
#include "cache/unit_widths.h"
#include "cache/watched_views.h"
#include "link/decoding.h"

namespace {

void watchNothing(const HostRange&, const ValueShape&) {}
void readNothing(const HostRange&, const ValueShape&, unsigned char*) {}
void storeNothing(const HostRange&, const unsigned char*) {}
void settleNothing(const HostRange&, const Settling&, bool) {}

// clang-format off
// shape: what a value counts in a length, its units, its first view flag
// settling: units, for what of a length, bytes, by full name, announcement of a failure
const UnitValues wordValues     = {{1, 1, 0}, watchValues, readValues<2>, storeWords,
                                   {1, 1, 2, false, wordFailed}, settleUnits};
const UnitValues twoByteValues  = {{1, 2, 1}, watchValues, readValues<1>, storeWordsOverBytes,
                                   {2, 1, 1, false, byteFailed}, settleUnits};
const UnitValues dwordValues    = {{2, 1, 0}, watchValues, readValues<4>, storeDwordUnits,
                                   {1, 1, 4, false, dwordFailed}, settleUnits};
// A length counts words of "R_D": each of them is settled.
const UnitValues twoWordValues  = {{2, 2, 1}, watchValues, readDwordsOverWords,
                                   storeDwordsOverWords,
                                   {1, 1, 2, false, wordFailed}, settleUnits};
// Storing knows no values over four units; settled is what it touched.
const UnitValues fourByteValues = {{2, 4, 3}, watchValues, readValues<1>, storeDwordUnits,
                                   {1, 2, 1, false, byteFailed}, settleUnits};
const UnitValues byteValues     = {{1, 1, 0}, watchValues, readValues<1>, storeSingleUnits,
                                   {1, 1, 1, false, byteFailed}, settleUnits};
const UnitValues namedBits      = {{1, 1, 0}, watchValues, readValues<1>, storeSingleUnits,
                                   {1, 1, 1, true, viewFailed}, settleUnits};
const UnitValues bitsInWords    = {{0, 0, 0}, watchBits, readBits, storeBitsOfWords,
                                   {0, 0, 0, false, 0}, settleBitsOfWords};
const UnitValues bitsInBytes    = {{0, 0, 0}, watchBits, readBits, storeBitsOfBytes,
                                   {0, 0, 0, false, 0}, settleBitsOfBytes};
const UnitValues noValues       = {{0, 0, 0}, watchNothing, readNothing, storeNothing,
                                   {0, 0, 0, false, 0}, settleNothing};
// clang-format on

} // namespace

// clang-format off
const UnitWidth unitWidths[unitWidthCount] = {
    // bits, register, views: bits, own, wider ones with first flag and units
    // decoding
    // values: word, double word, byte, bit under a name of its own, bit of a unit, none
    /* wordUnits  */ {16, true, {16, wordView, {{1, 2, dwordView}, {0, 0, plainView}}},
        decodeWords,
        {&wordValues, &twoWordValues, &byteValues, &namedBits, &bitsInWords, &noValues}},
    /* dwordUnits */ {32, false, {32, dwordView, {{0, 0, plainView}, {0, 0, plainView}}},
        decodeDwords,
        {&wordValues, &dwordValues, &byteValues, &namedBits, &noValues, &noValues}},
    /* byteUnits  */ {8, false, {8, byteView, {{1, 2, wordView}, {3, 4, dwordView}}},
        decodeBytes,
        {&twoByteValues, &fourByteValues, &byteValues, &namedBits, &bitsInBytes, &noValues}},
    /* bitUnits   */ {1, false, {0, plainView, {{0, 0, plainView}, {0, 0, plainView}}},
        decodeBits,
        {&wordValues, &dwordValues, &byteValues, &namedBits, &noValues, &noValues}},
    /* otherUnits */ {0, false, {0, plainView, {{0, 0, plainView}, {0, 0, plainView}}},
        decodeNothing,
        {&wordValues, &dwordValues, &byteValues, &namedBits, &noValues, &noValues}},
};
// clang-format on
