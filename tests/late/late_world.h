// An exchange on a bus of late stations, in time that runs as fast as they do.
#ifndef DOV417_TESTS_LATE_WORLD_H
#define DOV417_TESTS_LATE_WORLD_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "late_bus.h"
#include "link/exchange.h"

namespace dov417 {

class LateWorld {
public:
    explicit LateWorld(unsigned seed);

    void start();
    // The line is closed, and will be started by a new exchange: of this program, which knows what
    // may still be answered, or of another.
    void reopen(bool isAnotherProgram);
    // Runs until the request has its outcome.
    Transmission run(const Transmission& transmission);
    Transmission ask(const QByteArray& request, int replyLength);
    Transmission read(int station, int first, int count);
    Transmission write(int station, int address, int value);
    // Coils from LateBus::firstCoils on, else registers.
    Transmission readWords(int station, int first, int count);
    Transmission writeWords(int station, int first, const std::vector<int>& values);
    // What happens until then, with nothing asked.
    void pass(Clock::duration time);

    LateBus bus;
    ExchangeSettings settings;
    std::unique_ptr<Exchange> exchange;
    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
    int markers = 0;
    int sent = 0;
    int strays = 0;
    int surplus = 0; // of them
    std::vector<std::string> notices;
    std::function<void()> doubted;
    // A sound frame of the station came besides, or the answer to a marker.
    std::function<void(int station)> heard = [](int) {};

private:
    void step();

    ExchangeLine line_;
    Clock::time_point wake_ = Clock::time_point::max();
};

QByteArray readRequestOf(int station, int first, int count);
QByteArray writeRequestOf(int station, int address, int value);
// Coils from LateBus::firstCoils on, else registers.
QByteArray writeWordsRequestOf(int station, int first, const std::vector<int>& values);
bool isGood(const Transmission& ended);
int wordOf(const Transmission& ended, int index);
// The same of coils: the first is the lowest bit.
int coilsOf(const Transmission& ended, int index);

} // namespace dov417

#endif
