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
const UnitValues word        = {{1, 1, 0}, watchValues, readValues<2>, storeWords,
                                {1, 1, 2, false, wordFailed}, settleUnits};
const UnitValues twoBytes    = {{1, 2, 1}, watchValues, readValues<1>, storeWordsOverBytes,
                                {2, 1, 1, false, byteFailed}, settleUnits};
const UnitValues dword       = {{2, 1, 0}, watchValues, readValues<4>, storeDwordUnits,
                                {1, 1, 4, false, dwordFailed}, settleUnits};
// A length counts words of "R_D": each of them is settled.
const UnitValues twoWords    = {{2, 2, 1}, watchValues, readDwordsOverWords, storeDwordsOverWords,
                                {1, 1, 2, false, wordFailed}, settleUnits};
// Storing knows no values over four units; settled is what it touched.
const UnitValues fourBytes   = {{2, 4, 3}, watchValues, readValues<1>, storeDwordUnits,
                                {1, 2, 1, false, byteFailed}, settleUnits};
const UnitValues byte        = {{1, 1, 0}, watchValues, readValues<1>, storeSingleUnits,
                                {1, 1, 1, false, byteFailed}, settleUnits};
const UnitValues named       = {{1, 1, 0}, watchValues, readValues<1>, storeSingleUnits,
                                {1, 1, 1, true, viewFailed}, settleUnits};
const UnitValues bitsOfWord  = {{0, 0, 0}, watchBits, readBits, storeBitsOfWords,
                                {0, 0, 0, false, 0}, settleBitsOfWords};
const UnitValues bitsOfByte  = {{0, 0, 0}, watchBits, readBits, storeBitsOfBytes,
                                {0, 0, 0, false, 0}, settleBitsOfBytes};
const UnitValues nothing     = {{0, 0, 0}, watchNothing, readNothing, storeNothing,
                                {0, 0, 0, false, 0}, settleNothing};
// clang-format on

} // namespace

// clang-format off
const UnitWidth unitWidths[unitWidthCount] = {
    // bits, register, views: bits, own, wider ones with first flag and units
    //     decoding, values: word, double word, byte, bit under a name of its own, bit of a unit, none
    /* wordUnits  */ {16, true, {16, wordView, {{1, 2, dwordView}, {0, 0, plainView}}},
         decodeWords, {&word, &twoWords, &byte, &named, &bitsOfWord, &nothing}},
    /* dwordUnits */ {32, false, {32, dwordView, {{0, 0, plainView}, {0, 0, plainView}}},
         decodeDwords, {&word, &dword, &byte, &named, &nothing, &nothing}},
    /* byteUnits  */ {8, false, {8, byteView, {{1, 2, wordView}, {3, 4, dwordView}}},
         decodeBytes, {&twoBytes, &fourBytes, &byte, &named, &bitsOfByte, &nothing}},
    /* bitUnits   */ {1, false, {0, plainView, {{0, 0, plainView}, {0, 0, plainView}}},
         decodeBits, {&word, &dword, &byte, &named, &nothing, &nothing}},
    /* otherUnits */ {0, false, {0, plainView, {{0, 0, plainView}, {0, 0, plainView}}},
         decodeNothing, {&word, &dword, &byte, &named, &nothing, &nothing}},
};
// clang-format on
