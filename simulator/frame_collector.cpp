#include "simulator/frame_collector.h"

#include <utility>

#include "line/crc16.h"
#include "simulator/controller.h"

namespace dov417::simulator {

namespace {

constexpr int floodedSize = 4096;

} // namespace

void FrameCollector::append(const QByteArray& bytes)
{
    bytes_ += bytes;
}

QByteArray FrameCollector::takeFrame()
{
    const int length = requestLength(bytes_);
    if (length <= 0 || bytes_.size() < length)
        return QByteArray();
    QByteArray frame = bytes_.left(length);
    if (!hasGoodCrc(frame))
        return QByteArray();
    bytes_.remove(0, length);
    return frame;
}

QByteArray FrameCollector::takeRest()
{
    return std::exchange(bytes_, QByteArray());
}

bool FrameCollector::isEmpty() const
{
    return bytes_.isEmpty();
}

bool FrameCollector::isFlooded() const
{
    return bytes_.size() > floodedSize;
}

} // namespace dov417::simulator
