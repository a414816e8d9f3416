#include "host.h"

#include <cstdio>
#include <cstdlib>

#include "driver_reset.h"

namespace {

void saysNothing(QtMsgType, const QMessageLogContext&, const QString&) {}

const TypeFacts types[typeCount] = {
    {"I_bit", "I", true, true, 0, 2047},    {"Q_bit", "Q", true, true, 2048, 2047},
    {"M_bit", "M", true, true, 4096, 2047}, {"R_bit", "R", true, false, 1280, 63999},
    {"I_W", "I", false, true, 0, 127},      {"Q_W", "Q", false, true, 2048, 127},
    {"M_W", "M", false, true, 4096, 127},   {"R_W", "R", false, false, 1280, 3999},
    {"R_D", "R", false, false, 1280, 3998}, {"T", "T", false, false, 384, 127},
    {"C", "C", false, false, 512, 127},
};

} // namespace

void stop(const std::string& sentence)
{
    std::fprintf(stderr, "does not hold: %s\n", sentence.c_str());
    std::abort();
}

int Script::number()
{
    const unsigned int high = static_cast<unsigned int>(word());
    return static_cast<int>(high << 16 | static_cast<unsigned int>(word()));
}

int Script::station()
{
    const int chosen = byte();
    return chosen < 250 ? chosen % 4 : number();
}

int Script::address()
{
    const int chosen = byte();
    if (chosen < 128) {
        return chosen;
    }
    return chosen < 250 ? word() % 4200 : number();
}

int Script::length(int limit)
{
    const int chosen = byte();
    if (chosen < 200) {
        return chosen % limit;
    }
    return chosen < 250 ? word() % 1100 : -byte();
}

QString Script::regName()
{
    const int chosen = byte();
    if (chosen < 240) {
        return QString::fromLatin1(types[chosen % typeCount].name);
    }
    const char* const unknown[] = {"", "R", "R_", "r_w", "_bit", "X_bit", "R_W ", "M_bit_W"};
    return QString::fromLatin1(unknown[chosen % 8]);
}

QByteArray Script::bytes(int count)
{
    QByteArray taken;
    for (int i = 0; i < count; ++i) {
        taken.append(static_cast<char>(byte()));
    }
    return taken;
}

QByteArray Script::rest()
{
    return bytes(ended() ? 0 : static_cast<int>(size_ - place_));
}

const TypeFacts& factsOf(int type)
{
    return types[type];
}

int typeOf(const QString& regName)
{
    for (int i = 0; i < typeCount; ++i) {
        if (regName == QString::fromLatin1(types[i].name)) {
            return i;
        }
    }
    return -1;
}

void freshDriver(HostMemory& host, const char* property)
{
    qInstallMessageHandler(saysNothing);
    resetDriver();
    driver.frameVarCount = 0;
    intf_setAddrValueChangeCallBack(nullptr);
    int result = -1;
    intf_initProperty(host.block.data(), 0, host.recipe.data(), &result, property, &host.mutex);
}

int wrapped(long long value)
{
    return static_cast<int>(static_cast<unsigned int>(value));
}
