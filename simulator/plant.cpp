#include "simulator/plant.h"

#include <algorithm>
#include <cmath>

namespace dov417::simulator {

namespace {

constexpr int stepMs = 100;
constexpr int stepsPerSecond = 1000 / stepMs;

constexpr int runningLight = 0;
constexpr int inputCounter = 1;
constexpr int firstSwitch = 2;
constexpr int lastInput = 7;
constexpr unsigned switchEvery = 5; // on average, in steps

constexpr int timers = 128;
constexpr int counters = 128;

constexpr int firstSine = 32;
constexpr int firstWalk = 64;
constexpr int firstQuiet = 96;
constexpr int rampTop = 10000;
constexpr double sineMiddle = 5000;
constexpr double sineAmplitude = 4000;
constexpr int sinePeriod = 10 * stepsPerSecond;
constexpr int walkTop = 10000;
constexpr int walkStep = 50;
constexpr double pi = 3.14159265358979323846;

int sineAt(int word, std::int64_t steps)
{
    const std::int64_t period = std::int64_t{sinePeriod} * (word - firstSine + 1);
    const double angle = 2 * pi * static_cast<double>(steps % period) / static_cast<double>(period);
    return static_cast<int>(std::lround(sineMiddle + sineAmplitude * std::sin(angle)));
}

} // namespace

unsigned Plant::Life::below(unsigned limit)
{
    return static_cast<unsigned>(chance() % limit);
}

void Plant::Life::put(Area area, int word, int value)
{
    if (!held[static_cast<std::size_t>(area)][static_cast<std::size_t>(word)])
        memory->setWord(area, word, static_cast<std::uint16_t>(value & 0xFFFF));
}

Plant::Plant(Memory& memory, bool followInputs, std::uint32_t seed) : followInputs_(followInputs)
{
    for (int station : memory.stations()) {
        Life life{memory.station(station),
                  station,
                  std::mt19937(seed + static_cast<std::uint32_t>(station)),
                  {}};
        for (const AreaLayout& layout : areaLayouts())
            life.held[static_cast<std::size_t>(layout.area)].resize(
                static_cast<std::size_t>(layout.words));
        lives_.push_back(life);
    }
}

void Plant::hold(int station, Area area, int firstWord, int lastWord)
{
    const int from = std::max(firstWord, 0);
    const int to = std::min(lastWord, layoutOf(area).words - 1);
    for (Life& life : lives_) {
        if (station != 0 && station != life.station)
            continue;
        for (int word = from; word <= to; ++word)
            life.held[static_cast<std::size_t>(area)][static_cast<std::size_t>(word)] = true;
    }
}

void Plant::freeze(bool frozen)
{
    frozen_ = frozen;
}

bool Plant::isFrozen() const
{
    return frozen_;
}

void Plant::advance(int milliseconds)
{
    if (frozen_ || milliseconds < 0)
        return;
    remainderMs_ += milliseconds;
    for (; remainderMs_ >= stepMs; remainderMs_ -= stepMs) {
        ++steps_;
        for (Life& life : lives_)
            step(life);
    }
}

void Plant::step(Life& life) const
{
    const StationMemory& memory = *life.memory;

    life.put(Area::I, runningLight, 1 << (steps_ % 16));
    life.put(Area::I, inputCounter, memory.word(Area::I, inputCounter) + 1);
    for (int word = firstSwitch; word <= lastInput; ++word) {
        if (life.below(switchEvery) == 0)
            life.put(Area::I, word, memory.word(Area::I, word) ^ (1 << life.below(16)));
    }
    if (followInputs_) {
        for (int word = 0; word <= lastInput; ++word)
            life.put(Area::Q, word, memory.word(Area::I, word));
    }

    for (int n = 0; n < timers; ++n) {
        const int next = memory.word(Area::T, n) + 1;
        life.put(Area::T, n, next > (n + 1) * stepsPerSecond ? 0 : next);
    }
    for (int n = 0; n < counters; ++n) {
        if (steps_ % (n + 1) == 0)
            life.put(Area::C, n, memory.word(Area::C, n) + 1);
    }

    for (int word = 0; word < firstSine; ++word)
        life.put(Area::R, word, (memory.word(Area::R, word) + word + 1) % rampTop);
    for (int word = firstSine; word < firstWalk; ++word)
        life.put(Area::R, word, sineAt(word, steps_));
    for (int word = firstWalk; word < firstQuiet; ++word) {
        const int move = static_cast<int>(life.below(2 * walkStep + 1)) - walkStep;
        life.put(Area::R, word, std::clamp(memory.word(Area::R, word) + move, 0, walkTop));
    }
}

} // namespace dov417::simulator
