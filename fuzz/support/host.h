// What every fuzz target needs: a reader of the input's bytes, a host's memory, and a check that
// stops the program with a sentence.
#ifndef DOV417_FUZZ_HOST_H
#define DOV417_FUZZ_HOST_H

#include <QByteArray>
#include <QMutex>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "intf.h"
#include "made_records.h"

// Stops the program, so that the fuzzer keeps the input.
[[noreturn]] void stop(const std::string& sentence);
inline void require(bool holds, const char* sentence)
{
    if (!holds) {
        stop(sentence);
    }
}

// The input as a script: choices and numbers, one after the other; zeros once it is used up.
class Script {
public:
    Script(const std::uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool ended() const
    {
        return place_ >= size_;
    }
    int byte()
    {
        return ended() ? 0 : data_[place_++];
    }
    int choice(int count)
    {
        return byte() % count;
    }
    int word()
    {
        const int high = byte();
        return high * 256 + byte();
    }
    int number(); // any 32 bits
    // Numbers as hosts use them, now and then as nobody should.
    int station();
    int address();
    int length(int limit); // below the limit, and now and then not
    QString regName();
    QByteArray bytes(int count);
    QByteArray rest();

private:
    const std::uint8_t* data_;
    size_t size_;
    size_t place_ = 0;
};

// The names and numbers of the register table, stated once more.
enum {
    typeCount = 11
};
struct TypeFacts {
    const char* name;
    const char* area;
    bool bits;
    bool coils;
    int base;
    int highest; // address value
};
const TypeFacts& factsOf(int type);
int typeOf(const QString& regName); // -1 for an unknown name

// Memory that a host lends to the driver.
struct HostMemory {
    HostMemory() : block(60117, 0), recipe(4096, 0) {}

    std::vector<unsigned char> block; // exactly as long as promised
    std::vector<unsigned short> recipe;
    QMutex mutex;
};

// A driver as after loading, initialised with `property`, that says nothing.
void freshDriver(HostMemory& host, const char* property);

int wrapped(long long value); // low 32 bits

#endif
