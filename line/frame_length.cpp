#include "line/frame_length.h"

#include <algorithm>
#include <iterator>

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int reportServer = 17;
constexpr int functionLength = 2; // with the station
constexpr int addressLength = 4;
constexpr int quantityLength = 6;
constexpr int readReplyHead = 3;
constexpr int uncountedData = 256; // bytes that a count of 0 stands for

// Up to the data; these are counted by the head's last byte where it has a count.
struct Head {
    int length;
    bool hasCount;
};
struct Shape {
    int function;
    Head request;
    Head reply;
};
constexpr Shape shapes[] = {
    {1, {6, false}, {3, true}},   // read coils
    {2, {6, false}, {3, true}},   // read inputs
    {3, {6, false}, {3, true}},   // read registers
    {4, {6, false}, {3, true}},   // read input registers
    {5, {6, false}, {6, false}},  // write one coil
    {6, {6, false}, {6, false}},  // write one register
    {7, {2, false}, {3, false}},  // read exception status
    {8, {6, false}, {6, false}},  // diagnostics
    {11, {2, false}, {6, false}}, // communication event counter
    {15, {7, true}, {6, false}},  // write coils
    {16, {7, true}, {6, false}},  // write registers
    {17, {2, false}, {3, true}},  // report server id
    {22, {8, false}, {8, false}}, // mask write register
    {23, {11, true}, {3, true}},  // read and write registers
};

const Shape* shapeOf(int function)
{
    const auto* const found =
        std::find_if(std::begin(shapes), std::end(shapes),
                     [function](const Shape& shape) { return shape.function == function; });
    return found == std::end(shapes) ? nullptr : found;
}

int lengthOf(const Head& head, const QByteArray& begin)
{
    if (!head.hasCount)
        return head.length + crcLength;
    if (begin.size() < head.length)
        return notYetTold;
    return head.length + byteAt(begin, head.length - 1) + crcLength;
}

} // namespace

int lengthOfRequest(const QByteArray& begin)
{
    if (begin.size() < functionLength)
        return notYetTold;
    const int function = functionOf(begin);
    const Shape* const shape = shapeOf(function);
    if (!shape)
        return neverTold;
    const int length = lengthOf(shape->request, begin);
    const bool isWriteOfMany = function == writeCoils || function == writeRegisters;
    if (length == notYetTold || !isWriteOfMany)
        return length;
    // 256 bytes of data are counted as 0.
    const int due = bytesFor(function, wordAt(begin, addressLength));
    return (due & 0xFF) == byteAt(begin, quantityLength) ? shape->request.length + due + crcLength
                                                         : length;
}

int lengthOfReply(const QByteArray& begin)
{
    if (begin.size() < functionLength)
        return notYetTold;
    if ((byteAt(begin, functionIndex) & exceptionFlag) != 0)
        return exceptionLength;
    const Shape* const shape = shapeOf(functionOf(begin));
    return shape ? lengthOf(shape->reply, begin) : neverTold;
}

int maxLengthOfReply(const QByteArray& begin)
{
    const int length = lengthOfReply(begin);
    const bool saysZero =
        length == readReplyHead + crcLength && isReadFunction(byteAt(begin, functionIndex));
    return saysZero ? length + uncountedData : length;
}

int lengthOfReplyTo(const QByteArray& request)
{
    const int function = functionOf(request);
    const Shape* const shape = shapeOf(function);
    const bool isWhole = lengthOfRequest(request) == request.size();
    if (!shape || !isWhole || function == reportServer)
        return neverTold;
    if (!shape->reply.hasCount)
        return shape->reply.length + crcLength;
    return readReplyHead + bytesFor(function, wordAt(request, addressLength)) + crcLength;
}

int echoedHead(const QByteArray& request)
{
    const int function = functionOf(request);
    const Shape* const shape = shapeOf(function);
    if (function == diagnostics && request.size() >= quantityLength)
        return wordAt(request, functionLength) == 0 ? quantityLength : addressLength;
    const bool namesAddress = shape && !isReadFunction(function) && !shape->reply.hasCount &&
                              shape->reply.length >= quantityLength &&
                              shape->request.length >= quantityLength;
    return namesAddress ? addressLength : functionLength;
}

} // namespace dov417
