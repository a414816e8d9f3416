#include "plant.h"

#include "protocol/crc.h"

namespace {

enum {
    numbers = 65536 // of registers and of coils
};

int wordAt(const unsigned char* bytes)
{
    return bytes[0] << 8 | bytes[1];
}

QByteArray withCrc(QByteArray bytes)
{
    const int size = static_cast<int>(bytes.size());
    bytes.append("\0\0", 2);
    appendCrc(reinterpret_cast<unsigned char*>(bytes.data()), size);
    return bytes;
}

} // namespace

Plant::Plant()
{
    for (Station& station : stations_) {
        station.registers.resize(numbers);
        station.coils.resize(numbers);
    }
}

QByteArray Plant::answer(const FRAME_PRO& frame)
{
    const unsigned char* bytes = frame.frame;
    if (frame.sendLength < 8 || bytes[0] < 1 || bytes[0] > stations) {
        return QByteArray();
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    Station& station = stations_[bytes[0] - 1];
    if (bytes[1] == 1 || bytes[1] == 3) {
        return read(station, bytes);
    }
    return write(station, bytes) ? withCrc(QByteArray(reinterpret_cast<const char*>(bytes), 6))
                                 : QByteArray();
}

QByteArray Plant::read(const Station& station, const unsigned char* frame) const
{
    const int start = wordAt(frame + 2);
    const int count = wordAt(frame + 4);
    QByteArray reply(reinterpret_cast<const char*>(frame), 2);
    const int bytes = frame[1] == 1 ? (count + 7) / 8 : 2 * count;
    reply.append(static_cast<char>(bytes));
    for (int i = 0; frame[1] == 3 && i < count; ++i) {
        const int word = station.registers.at(static_cast<size_t>(start + i));
        reply.append(static_cast<char>(word >> 8));
        reply.append(static_cast<char>(word));
    }
    for (int byte = 0; frame[1] == 1 && byte < bytes; ++byte) {
        int packed = 0;
        for (int bit = 0; bit < 8 && 8 * byte + bit < count; ++bit) {
            packed |= station.coils.at(static_cast<size_t>(start + 8 * byte + bit)) ? 1 << bit : 0;
        }
        reply.append(static_cast<char>(packed));
    }
    return withCrc(reply);
}

bool Plant::write(Station& station, const unsigned char* frame)
{
    const size_t start = static_cast<size_t>(wordAt(frame + 2));
    const int count = wordAt(frame + 4); // or the value
    const unsigned char* payload = frame + 7;
    switch (frame[1]) {
    case 5:
        station.coils.at(start) = count != 0;
        return true;
    case 6:
        station.registers.at(start) = static_cast<std::uint16_t>(count);
        return true;
    case 15:
        for (int i = 0; i < count; ++i) {
            station.coils.at(start + static_cast<size_t>(i)) = (payload[i / 8] >> (i % 8) & 1) != 0;
        }
        return true;
    case 16:
        for (int i = 0; i < count; ++i) {
            station.registers.at(start + static_cast<size_t>(i)) =
                static_cast<std::uint16_t>(wordAt(payload + 2 * i));
        }
        return true;
    }
    return false;
}

int Plant::reg(int station, int number) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return stations_[station - 1].registers.at(static_cast<size_t>(number));
}

bool Plant::coil(int station, int number) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return stations_[station - 1].coils.at(static_cast<size_t>(number));
}
