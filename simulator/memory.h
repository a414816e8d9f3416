// What the controller holds: the areas I, Q, M, R, T and C of each station.
//
// The line sees coils and registers, a person sees areas and words; both are the same memory:
//
//   area  line       address of word w      words
//   I     coils      0    + 16 w            0 to 127     bit b of a word is coil + b
//   Q     coils      2048 + 16 w            0 to 127
//   M     coils      4096 + 16 w            0 to 127
//   T     registers  384  + w               0 to 127
//   C     registers  512  + w               0 to 127
//   R     registers  1280 + w               0 to 3999
//
// Coils 0 to 6143 have no hole; registers are there from 384 to 639 and from 1280 to 5279.
//
// Nothing here locks. Who looks at the memory of a controller that serves a line in another thread
// does so in that thread (QMetaObject::invokeMethod on the line server).
#ifndef DOV417_SIMULATOR_MEMORY_H
#define DOV417_SIMULATOR_MEMORY_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace dov417::simulator {

enum class Area {
    I,
    Q,
    M,
    R,
    T,
    C
};

struct AreaLayout {
    Area area;
    char letter;
    bool coils; // else holding registers
    int base;   // line address of word 0
    int words;
};

// In the order I, Q, M, R, T, C.
const std::array<AreaLayout, 6>& areaLayouts();
const AreaLayout& layoutOf(Area area);

// One station. Addresses outside of the memory are the caller's to exclude, with hasCoils(),
// hasRegisters() or hasWords(): here they read as 0 and take no value.
class StationMemory {
public:
    StationMemory();

    // As the line addresses it. True when all of the run is there; a run is one coil or longer.
    static bool hasCoils(int first, int count);
    static bool hasRegisters(int first, int count);
    bool coil(int address) const;
    void setCoil(int address, bool on);
    std::uint16_t registerValue(int address) const;
    void setRegister(int address, std::uint16_t value);

    // As a person addresses it.
    static bool hasWords(Area area, int first, int count);
    std::uint16_t word(Area area, int word) const;
    void setWord(Area area, int word, std::uint16_t value);
    bool bit(Area area, int word, int bit) const;
    void setBit(Area area, int word, int bit, bool on);
    // Two words, the low-order one first, as "R_D" has them.
    std::uint32_t doubleWord(Area area, int word) const;
    void setDoubleWord(Area area, int word, std::uint32_t value);

private:
    std::array<std::vector<std::uint16_t>, 6> areas_;
};

// All stations that answer on the line, each all zero at first.
class Memory {
public:
    // Station numbers 1 to 247; others are left out.
    explicit Memory(const std::vector<int>& stations = {1});

    bool has(int station) const;
    std::vector<int> stations() const; // ascending
    // Null for a station that is not there. The pointers stay valid as long as the memory.
    StationMemory* station(int station);
    const StationMemory* station(int station) const;

private:
    std::map<int, StationMemory> stations_;
};

} // namespace dov417::simulator

#endif
