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
    m_bytes += bytes;
}

QByteArray FrameCollector::takeFrame()
{
    const int length = requestLength(m_bytes);
    if (length <= 0 || m_bytes.size() < length)
        return QByteArray();
    QByteArray frame = m_bytes.left(length);
    if (!hasGoodCrc(frame))
        return QByteArray();
    m_bytes.remove(0, length);
    return frame;
}

QByteArray FrameCollector::takeRest()
{
    return std::exchange(m_bytes, QByteArray());
}

bool FrameCollector::isEmpty() const
{
    return m_bytes.isEmpty();
}

bool FrameCollector::isFlooded() const
{
    return m_bytes.size() > floodedSize;
}

} // namespace dov417::simulator
