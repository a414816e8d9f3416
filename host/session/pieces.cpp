#include "session/pieces.h"

#include "line/frame_bytes.h"

#include <algorithm>
#include <cstddef>

namespace dov417 {

namespace {

// Below 1 the driver cuts single reads, too, where a write has to end.
int maxPieceWords(int maximum, int gap)
{
    return std::min(maximum, gap < 1 ? maxWordsOfAWrite : gap);
}

int pieceLength(const Address& address, int maximum, int gap)
{
    const int limit = maxPieceWords(maximum, gap);
    const int units = unitsOf(address);
    if (limit < units && address.width == Width::text)
        throw UsageFailure("a merge gap of " + std::to_string(gap) + " cuts a text of " +
                           std::to_string(units) +
                           " words in two: the gap is also the maximum length of a piece of a "
                           "write or single read; use --gap " +
                           std::to_string(units) + " or more, or 0");
    if (limit < units && address.width == Width::quadWord)
        throw UsageFailure("a merge gap below 4 cuts 64-bit values in two: the gap is also the "
                           "maximum length of a piece of a write or single read; use --gap 4 or "
                           "more, or 0");
    if (limit < units)
        throw UsageFailure(
            "a merge gap of 1 cuts 32-bit values in two: the gap is also the maximum "
            "length of a piece of a write or single read; use --gap 2 or more, or 0");
    return limit - limit % units;
}

// Is its width that of a format, which takes several units of the register type for one value?
bool isOfSeveral(Width own, const Address& address)
{
    if (address.width == Width::text)
        return own == Width::word;
    return address.width == Width::quadWord && own != Width::bit &&
           address.length % unitsOf(address.width) == 0;
}

std::vector<Address> cut(const Address& address, int length)
{
    std::vector<Address> pieces;
    for (int done = 0; done < address.length; done += length) {
        Address piece = address;
        piece.first = address.first + done;
        piece.length = std::min(length, address.length - done);
        pieces.push_back(piece);
    }
    return pieces;
}

} // namespace

std::vector<Write> writePieces(const Address& address, const std::vector<unsigned char>& data,
                               int gap)
{
    const bool bits = address.width == Width::bit;
    const int bytesPerUnit = bits ? 1 : bytesPerWord;
    std::vector<Write> pieces;
    auto from = data.begin();
    for (const Address& piece :
         cut(address, bits ? 1 : pieceLength(address, maxWordsOfAWrite, gap))) {
        const auto end = from + static_cast<std::ptrdiff_t>(piece.length) * bytesPerUnit;
        pieces.push_back({piece, {from, end}});
        from = end;
    }
    return pieces;
}

bool isOnePiece(const Write& write, int gap)
{
    const int length = write.address.length;
    if (write.address.width == Width::bit)
        return length == 1 && write.data.size() == 1;
    return length >= 1 && length <= maxPieceWords(maxWordsOfAWrite, gap) &&
           write.data.size() == static_cast<std::size_t>(length) * bytesPerWord;
}

bool isOneReadPiece(const Address& words, int gap)
{
    return words.width != Width::bit && words.length >= 1 &&
           words.length <= maxPieceWords(maxWordsOfARead, gap);
}

Address wordsOf(const Address& address)
{
    const Words words = wordsOf(address.width, address.first, address.length);
    const std::string area = areaOf(address.regName);
    Address whole = address;
    whole.regName = area == address.regName ? area : area + "_W";
    whole.width = Width::word;
    whole.first = words.first;
    whole.length = words.count;
    return whole;
}

std::vector<Address> readPieces(const Address& address, int gap)
{
    Address words = wordsOf(address);
    if (address.width == Width::quadWord || address.width == Width::text)
        words.width = address.width; // where the link may cut it
    return cut(words, pieceLength(address, maxWordsOfARead, gap));
}

Result usable(const Library& library, const Address& address, Access access)
{
    try {
        parseStation(std::to_string(address.station));
        requireAccess(library, address, access);
        const std::string text = toText(library, address);
        Address named = parseAddress(library, text);
        if (isOfSeveral(named.width, address))
            named.width = address.width;
        if (!(named == address))
            return Result::refused(text + " is no address of its register type");
    } catch (const Failure& failure) {
        return Result::refused(failure.what());
    }
    return Result();
}

std::vector<Address> watchPieces(const Address& address)
{
    // The first bit may lie within its word.
    const bool bits = address.width == Width::bit;
    return cut(address, bits ? (maxPlan - 1) * bitsPerWord : maxPlan);
}

} // namespace dov417
