#include "simulator/memory.h"

#include <cstddef>

#include "line/frame_bytes.h"

namespace dov417::simulator {

namespace {

constexpr int lowestStation = 1;

constexpr std::array<AreaLayout, 6> layouts = {{
    {Area::I, 'I', true, 0, 128},
    {Area::Q, 'Q', true, 2048, 128},
    {Area::M, 'M', true, 4096, 128},
    {Area::R, 'R', false, 1280, 4000},
    {Area::T, 'T', false, 384, 128},
    {Area::C, 'C', false, 512, 128},
}};

std::size_t indexOf(Area area)
{
    return static_cast<std::size_t>(area);
}

int lineUnits(const AreaLayout& layout)
{
    return layout.coils ? layout.words * bitsPerWord : layout.words;
}

// The area in which a line address lies, null for none.
const AreaLayout* areaAt(bool coils, int address)
{
    for (const AreaLayout& layout : layouts) {
        if (layout.coils == coils && address >= layout.base &&
            address - layout.base < lineUnits(layout))
            return &layout;
    }
    return nullptr;
}

// A run may pass from one area to the next where the line addresses have no hole between them.
bool isThere(bool coils, int first, int count)
{
    if (count < 1)
        return false;
    while (count > 0) {
        const AreaLayout* layout = areaAt(coils, first);
        if (!layout)
            return false;
        const int here = layout->base + lineUnits(*layout) - first;
        first += here;
        count -= here;
    }
    return true;
}

} // namespace

const std::array<AreaLayout, 6>& areaLayouts()
{
    return layouts;
}

const AreaLayout& layoutOf(Area area)
{
    return layouts[indexOf(area)];
}

StationMemory::StationMemory()
{
    for (const AreaLayout& layout : layouts)
        areas_[indexOf(layout.area)].resize(static_cast<std::size_t>(layout.words));
}

bool StationMemory::hasCoils(int first, int count)
{
    return isThere(true, first, count);
}

bool StationMemory::hasRegisters(int first, int count)
{
    return isThere(false, first, count);
}

bool StationMemory::coil(int address) const
{
    const AreaLayout* layout = areaAt(true, address);
    if (!layout)
        return false;
    const int offset = address - layout->base;
    return bit(layout->area, offset / bitsPerWord, offset % bitsPerWord);
}

void StationMemory::setCoil(int address, bool on)
{
    if (const AreaLayout* layout = areaAt(true, address)) {
        const int offset = address - layout->base;
        setBit(layout->area, offset / bitsPerWord, offset % bitsPerWord, on);
    }
}

std::uint16_t StationMemory::registerValue(int address) const
{
    const AreaLayout* layout = areaAt(false, address);
    return layout ? word(layout->area, address - layout->base) : std::uint16_t{0};
}

void StationMemory::setRegister(int address, std::uint16_t value)
{
    if (const AreaLayout* layout = areaAt(false, address))
        setWord(layout->area, address - layout->base, value);
}

bool StationMemory::hasWords(Area area, int first, int count)
{
    const int words = layoutOf(area).words;
    return first >= 0 && count >= 1 && count <= words && first <= words - count;
}

std::uint16_t StationMemory::word(Area area, int word) const
{
    if (!hasWords(area, word, 1))
        return 0;
    return areas_[indexOf(area)][static_cast<std::size_t>(word)];
}

void StationMemory::setWord(Area area, int word, std::uint16_t value)
{
    if (hasWords(area, word, 1))
        areas_[indexOf(area)][static_cast<std::size_t>(word)] = value;
}

bool StationMemory::bit(Area area, int word, int bit) const
{
    return bit >= 0 && bit < bitsPerWord && ((this->word(area, word) >> bit) & 1) != 0;
}

void StationMemory::setBit(Area area, int word, int bit, bool on)
{
    if (bit < 0 || bit >= bitsPerWord)
        return;
    const unsigned mask = 1U << bit;
    const unsigned before = this->word(area, word);
    setWord(area, word, static_cast<std::uint16_t>(on ? before | mask : before & ~mask));
}

std::uint32_t StationMemory::doubleWord(Area area, int word) const
{
    return this->word(area, word) | static_cast<std::uint32_t>(this->word(area, word + 1)) << 16;
}

void StationMemory::setDoubleWord(Area area, int word, std::uint32_t value)
{
    setWord(area, word, static_cast<std::uint16_t>(value & 0xFFFF));
    setWord(area, word + 1, static_cast<std::uint16_t>(value >> 16));
}

Memory::Memory(const std::vector<int>& stations)
{
    for (int number : stations) {
        if (number >= lowestStation && number <= maxStation)
            stations_.try_emplace(number);
    }
}

bool Memory::has(int station) const
{
    return stations_.count(station) != 0;
}

std::vector<int> Memory::stations() const
{
    std::vector<int> numbers;
    for (const auto& entry : stations_)
        numbers.push_back(entry.first);
    return numbers;
}

StationMemory* Memory::station(int station)
{
    const auto found = stations_.find(station);
    return found == stations_.end() ? nullptr : &found->second;
}

const StationMemory* Memory::station(int station) const
{
    const auto found = stations_.find(station);
    return found == stations_.end() ? nullptr : &found->second;
}

} // namespace dov417::simulator
