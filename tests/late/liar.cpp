// Stations on a pseudo-terminal that answer late in one of many ways: dov417_liar KIND [SEED]
// Prints "ready" and the port, and answers until it is killed.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <map>
#include <poll.h>
#include <string>
#include <termios.h>
#include <unistd.h>

#include "late_bus.h"
#include "line/frame_length.h"

namespace {

using namespace dov417;
using std::chrono::milliseconds;

constexpr int stations = 3;

void setDelays(LateBus& bus, int usual, int rare, double share)
{
    for (auto& [number, station] : bus.stations)
        station.delay = [&bus, usual, rare, share]() -> Micros {
            return milliseconds(bus.share() < share ? bus.between(usual, rare) : usual);
        };
}

template <typename Change>
void forAll(LateBus& bus, Change change)
{
    for (auto& [number, station] : bus.stations)
        change(station);
}

const std::map<std::string, std::function<void(LateBus&)>> kinds = {
    {"prompt", [](LateBus& bus) { setDelays(bus, 5, 5, 0); }},
    {"300ms", [](LateBus& bus) { setDelays(bus, 300, 300, 0); }},
    {"600ms", [](LateBus& bus) { setDelays(bus, 600, 600, 0); }},
    {"random", [](LateBus& bus) { setDelays(bus, 1, 1500, 1); }},
    {"jumps", [](LateBus& bus) { setDelays(bus, 10, 2000, 0.1); }},
    {"lossy",
     [](LateBus& bus) {
         setDelays(bus, 10, 700, 0.2);
         forAll(bus,
                [](LateStation& station) { station.loses = station.garbles = station.cuts = 0.1; });
     }},
    {"bytewise",
     [](LateBus& bus) {
         setDelays(bus, 300, 700, 0.3);
         forAll(bus, [](LateStation& station) { station.byteGap = Micros(3000); });
     }},
    {"drops",
     [](LateBus& bus) {
         setDelays(bus, 20, 900, 0.3);
         forAll(bus, [](LateStation& station) { station.dropsWhenAskedAgain = true; });
     }},
    {"no8",
     [](LateBus& bus) {
         setDelays(bus, 20, 900, 0.3);
         forAll(bus, [](LateStation& station) { station.diagnostics = 0; });
     }},
    {"silent8",
     [](LateBus& bus) {
         setDelays(bus, 20, 900, 0.3);
         forAll(bus, [](LateStation& station) { station.diagnostics = -1; });
     }},
    {"onedead",
     [](LateBus& bus) {
         setDelays(bus, 20, 20, 0);
         bus.stations.erase(stations);
     }},
    {"joined",
     [](LateBus& bus) {
         setDelays(bus, 20, 900, 0.3);
         bus.latency = milliseconds(60);
     }},
    {"modem", [](LateBus& bus) {
         setDelays(bus, 30, 40, 1);
         forAll(bus, [](LateStation& station) {
             station.repeats = 0.1;
             station.repeatLag = milliseconds(20);
         });
     }}};

int openTerminal()
{
    const int descriptor = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios raw{};
    if (descriptor < 0 || grantpt(descriptor) != 0 || unlockpt(descriptor) != 0 ||
        tcgetattr(descriptor, &raw) != 0)
        return -1;
    cfmakeraw(&raw);
    return tcsetattr(descriptor, TCSANOW, &raw) == 0 ? descriptor : -1;
}

int untilNext(const LateBus& bus)
{
    const Clock::time_point next = bus.nextEvent();
    if (next == Clock::time_point::max())
        return -1;
    const auto left = std::chrono::ceil<milliseconds>(next - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

void serve(LateBus& bus, int terminal)
{
    QByteArray pending;
    for (;;) {
        pollfd watched{terminal, POLLIN, 0};
        if (poll(&watched, 1, untilNext(bus)) < 0)
            return;
        char buffer[512];
        const auto count = read(terminal, buffer, sizeof buffer);
        if (count > 0)
            pending.append(buffer, static_cast<int>(count));
        const Clock::time_point now = Clock::now();
        for (int length = lengthOfRequest(pending); length > 0 && pending.size() >= length;
             length = lengthOfRequest(pending)) {
            bus.send(pending.left(length), now);
            pending.remove(0, length);
        }
        const QByteArray bytes = bus.arrived(now);
        if (!bytes.isEmpty() && write(terminal, bytes.constData(),
                                      static_cast<std::size_t>(bytes.size())) != bytes.size())
            return;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const auto kind = argc > 1 ? kinds.find(argv[1]) : kinds.end();
    const int terminal = openTerminal();
    if (kind == kinds.end() || terminal < 0) {
        std::fprintf(stderr, "usage: dov417_liar KIND [SEED], of these:");
        for (const auto& [name, change] : kinds)
            std::fprintf(stderr, " %s", name.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    LateBus bus(argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1);
    for (int number = 1; number <= stations; ++number)
        bus.stations[number].delay = []() { return Micros(0); };
    kind->second(bus);
    const int keeper = open(ptsname(terminal), O_RDWR | O_NOCTTY); // masters come and go
    std::printf("ready %s\n", ptsname(terminal));
    std::fflush(stdout);
    serve(bus, terminal);
    close(keeper);
    return 0;
}
