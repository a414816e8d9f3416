#include "link/request_parts.h"

#include <algorithm>
#include <limits>

#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int requestHead = 6; // station, function, address, quantity
constexpr int writtenData = 7; // the byte count before it
constexpr int readData = 3;

bool carriesRun(const QByteArray& request)
{
    const int function = functionOf(request);
    return function == readCoils || function == readRegisters || function == writeCoils ||
           function == writeRegisters;
}

// Of address and quantity.
int unitsPerWord(const QByteArray& request)
{
    return isOfCoils(request) ? bitsPerWord : 1;
}

} // namespace

int wordsIn(const QByteArray& request)
{
    const int units = unitsPerWord(request);
    if (!carriesRun(request) || wordAt(request, quantityIndex) % units != 0)
        return 0;
    return wordAt(request, quantityIndex) / units;
}

bool isWrite(const QByteArray& request)
{
    return !isReadFunction(functionOf(request));
}

bool isOfCoils(const QByteArray& request)
{
    const int function = functionOf(request);
    return function == readCoils || function == writeCoils;
}

std::vector<int> partLengths(int words, int maximum, const MayCut& mayCut)
{
    constexpr int impossible = std::numeric_limits<int>::max();
    const auto count = static_cast<std::size_t>(words);
    const auto maxPartWords = static_cast<std::size_t>(maximum);

    // By the word that a part would begin with: how many parts it takes from there to the end. From
    // farther on it never takes more, so cutting as far on as possible is optimal.
    std::vector<int> needed(count + 1, impossible);
    needed.at(count) = 0;
    for (std::size_t from = count; from-- > 0;) {
        if (from > 0 && !mayCut(static_cast<int>(from)))
            continue; // nothing begins there
        std::size_t to = std::min(count, from + maxPartWords);
        while (to > from && needed.at(to) == impossible)
            --to;
        if (to > from)
            needed.at(from) = needed.at(to) + 1;
    }
    if (needed.front() == impossible)
        return {};

    std::vector<int> lengths;
    for (std::size_t from = 0; from < count; from += static_cast<std::size_t>(lengths.back())) {
        int chosen = 0;
        bool isNew = false;
        for (std::size_t length = std::min(maxPartWords, count - from); length > 0 && !isNew;
             --length) {
            if (needed.at(from + length) != needed.at(from) - 1)
                continue;
            const int candidate = static_cast<int>(length);
            isNew = std::find(lengths.begin(), lengths.end(), candidate) == lengths.end();
            if (chosen == 0 || isNew)
                chosen = candidate;
        }
        lengths.push_back(chosen);
    }
    return lengths;
}

QByteArray partOf(const QByteArray& request, int first, int words)
{
    const int units = unitsPerWord(request);
    QByteArray frame = request.left(addressIndex);
    appendWord(frame, wordAt(request, addressIndex) + first * units);
    appendWord(frame, words * units);
    if (isWrite(request)) {
        frame.append(static_cast<char>(words * bytesPerWord));
        frame.append(request.mid(writtenData + first * bytesPerWord, words * bytesPerWord));
    }
    return withCrc(frame);
}

int partReplyLength(const QByteArray& request, int words)
{
    return isWrite(request) ? requestHead + crcLength : readData + words * bytesPerWord + crcLength;
}

QByteArray joinedReply(const QByteArray& request, const std::vector<QByteArray>& replies)
{
    if (isWrite(request))
        return withCrc(request.left(requestHead)); // the echo of the whole address and quantity
    QByteArray reply = request.left(addressIndex);
    reply.append(static_cast<char>(wordsIn(request) * bytesPerWord));
    for (const QByteArray& part : replies)
        reply.append(part.mid(readData, part.size() - readData - crcLength));
    return withCrc(reply);
}

} // namespace dov417
