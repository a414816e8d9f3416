#include "late_world.h"

#include <algorithm>
#include <stdexcept>

#include "line/crc16.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

QByteArray requestOf(int station, char function, int first, int second)
{
    QByteArray request;
    request.append(static_cast<char>(station)).append(function);
    request.append(static_cast<char>(first >> 8)).append(static_cast<char>(first & 0xFF));
    return request.append(static_cast<char>(second >> 8)).append(static_cast<char>(second & 0xFF));
}

} // namespace

QByteArray readRequestOf(int station, int first, int count)
{
    return requestOf(station, 3, first, count);
}

QByteArray writeRequestOf(int station, int address, int value)
{
    return requestOf(station, 6, address, value);
}

QByteArray writeWordsRequestOf(int station, int first, const std::vector<int>& values)
{
    const bool areCoils = first >= LateBus::firstCoils;
    const auto count = static_cast<int>(values.size());
    QByteArray request =
        areCoils ? requestOf(station, 15, 16 * (first - LateBus::firstCoils), 16 * count)
                 : requestOf(station, 16, first, count);
    request.append(static_cast<char>(2 * count));
    for (const int value : values) {
        const char high = static_cast<char>(value >> 8);
        const char low = static_cast<char>(value & 0xFF);
        request.append(areCoils ? low : high).append(areCoils ? high : low);
    }
    return request;
}

bool isGood(const Transmission& ended)
{
    return ended.reception.result == LineResult::reply && hasGoodCrc(ended.reception.bytes);
}

int wordOf(const Transmission& ended, int index)
{
    const QByteArray& bytes = ended.reception.bytes;
    return static_cast<unsigned char>(bytes.at(3 + 2 * index)) * 256 +
           static_cast<unsigned char>(bytes.at(4 + 2 * index));
}

int coilsOf(const Transmission& ended, int index)
{
    const int word = wordOf(ended, index);
    return word >> 8 | (word & 0xFF) << 8;
}

LateWorld::LateWorld(unsigned seed) : bus(seed)
{
    line_.write = [this](const QByteArray& bytes) { bus.send(bytes, now); };
    line_.bytesWait = []() { return false; };
    line_.wakeAt = [this](Clock::time_point when) { wake_ = when; };
    line_.sleep = [this]() { wake_ = Clock::time_point::max(); };
    line_.sent = [this](const Transmission& frame) { ++(frame.isMarker ? markers : sent); };
    line_.markerEnded = [this](const Transmission& marker) {
        if (isSound(marker.reception))
            heard(marker.request.station);
    };
    line_.stray = [this](const Stray& stray) {
        ++strays;
        surplus += stray.kind == StrayKind::surplus ? 1 : 0;
        if (hasGoodCrc(stray.bytes))
            heard(static_cast<unsigned char>(stray.bytes.at(0)));
    };
    line_.notice = [this](const std::string& text) { notices.push_back(text); };
    line_.doubt = [this]() {
        if (doubted)
            doubted();
    };
    exchange = std::make_unique<Exchange>(line_);
    settings.timeout = {milliseconds(500), seconds(15), false};
    settings.turnaround = milliseconds(100);
    settings.replyGap = milliseconds(100);
    settings.horizon = seconds(30);
}

void LateWorld::start()
{
    exchange->start(settings, now);
}

void LateWorld::reopen(bool isAnotherProgram)
{
    const Books earlier = exchange->books();
    exchange->stop();
    exchange = std::make_unique<Exchange>(line_);
    if (!isAnotherProgram)
        exchange->awaitLate(earlier);
}

Transmission LateWorld::ask(const QByteArray& request, int replyLength)
{
    Transmission transmission;
    transmission.sent = withCrc(request);
    transmission.replyLength = replyLength;
    transmission.request.length = (replyLength - 5) / 2;
    return run(transmission);
}

Transmission LateWorld::run(const Transmission& transmission)
{
    std::optional<Transmission> ended;
    exchange->transact(
        transmission, [&ended](const Transmission& each) { ended = each; }, now);
    while (!ended)
        step();
    return *ended;
}

Transmission LateWorld::read(int station, int first, int count)
{
    return ask(readRequestOf(station, first, count), 5 + 2 * count);
}

Transmission LateWorld::write(int station, int address, int value)
{
    return ask(writeRequestOf(station, address, value), station == 0 ? 0 : 8);
}

Transmission LateWorld::readWords(int station, int first, int count)
{
    if (first < LateBus::firstCoils)
        return read(station, first, count);
    const int coil = 16 * (first - LateBus::firstCoils);
    return ask(requestOf(station, 1, coil, 16 * count), 5 + 2 * count);
}

Transmission LateWorld::writeWords(int station, int first, const std::vector<int>& values)
{
    return ask(writeWordsRequestOf(station, first, values), 8);
}

void LateWorld::pass(Clock::duration time)
{
    const Clock::time_point until = now + time;
    while (std::min(wake_, bus.nextEvent()) < until)
        step();
    now = until;
}

void LateWorld::step()
{
    const Clock::time_point event = bus.nextEvent();
    if (std::min(event, wake_) == Clock::time_point::max())
        throw std::logic_error("nothing happens any more");
    if (event <= wake_) {
        now = std::max(now, event);
        const QByteArray bytes = bus.arrived(now);
        if (!bytes.isEmpty())
            exchange->bytesCame(bytes, now);
    } else {
        now = std::max(now, wake_);
        wake_ = Clock::time_point::max();
        exchange->timerDue(now);
    }
}

} // namespace dov417
