// How the driver's costs grow: planning with the number of keys, every other call with the number
// of cached units and of queued writes. The table at the end lists what is measured.
#include <QDebug>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "allocation_count.h"
#include "intf.h"
#include "protocol.h"
#include "protocol/crc.h"

namespace {

enum {
    polledWords = 100, // from word 0 of station 1: the plan's one read
    writtenFirst = 2000,
    writtenPlaces = 2000, // one word each
    longestQueue = 513
};

void silence(QtMsgType, const QMessageLogContext&, const QString&) {}

void ignoreChange(int, int, QString&, int) {}

void initialise(const char* property)
{
    intf_setAddrValueChangeCallBack(ignoreChange);
    intf_initProperty(nullptr, 0, nullptr, nullptr, property, nullptr);
}

KEY_ADDRESS wordKey(int station, int address, int length)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = station;
    key.regName = QString::fromLatin1("R_W");
    key.address = address;
    key.length = length;
    return key;
}

QByteArray readReply(int fill)
{
    std::vector<unsigned char> bytes = {1, 3, 2 * polledWords};
    bytes.resize(3 + 2 * polledWords, static_cast<unsigned char>(fill));
    bytes.resize(bytes.size() + 2);
    appendCrc(bytes.data(), static_cast<int>(bytes.size()) - 2);
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

// What the calls below need at hand.
const QString words = QString::fromLatin1("R_W");
QByteArray replies[2];
QByteArray echo(8, 0); // of a write of one word: the request itself
int turn = 0;
int place = 0;
QList<KEY_ADDRESS> keys;
std::vector<unsigned char> checkedBytes;

// ---- prepared once ---------------------------------------------------------------------------

void shuffledKeys(int count)
{
    keys.clear();
    for (int i = 0; i < count; ++i) {
        const int shuffled = static_cast<int>((static_cast<long long>(i) * 7919) % count);
        keys.append(wordKey(1 + shuffled / 1300, 3 * (shuffled % 1300), 2));
    }
}

// So many units in the cache: those of the read in the plan, the others in stations of 4000 words.
void cachedUnits(int units)
{
    initialise("0#0#0#3#128");
    replies[0] = readReply(1);
    replies[1] = readReply(2);
    std::vector<unsigned char> out(8000);
    int left = units - polledWords;
    for (int station = 2; left > 0; ++station, left -= 4000) {
        intf_getData(station, words, 0, left < 4000 ? left : 4000, out.data());
    }
    QList<KEY_ADDRESS> polled;
    polled.append(wordKey(1, 0, polledWords));
    intf_addrMerge(polled);
}

// To a place that is not queued yet, which takes the longest search; the first ones may be queued
// for good.
void writeNewPlace()
{
    unsigned char value[2] = {1, 2};
    place = place + 1 < writtenPlaces ? place + 1 : static_cast<int>(longestQueue) + 1;
    intf_setData(1, words, writtenFirst + place, 1, value, 0);
}

void queuedWrites(int count)
{
    cachedUnits(polledWords);
    std::vector<unsigned char> out(2 * writtenPlaces);
    intf_getData(1, words, writtenFirst, writtenPlaces, out.data());
    place = 0;
    for (int i = 0; i < count; ++i) {
        writeNewPlace();
    }
}

void someBytes(int count)
{
    checkedBytes.assign(static_cast<size_t>(count), 0x5A);
}

// ---- the calls -------------------------------------------------------------------------------

void plan()
{
    initialise("0#0#0#3#10");
    benchmark::DoNotOptimize(intf_addrMerge(keys));
}

void poll(QByteArray& reply)
{
    static FRAME_PRO frame;
    static QString errorText;
    intf_getSendFrame(&frame);
    if (&reply == &echo) {
        std::memcpy(echo.data(), frame.frame, 8);
    }
    if (intf_dealRcvFrame(&reply, &errorText) != replyAccepted) {
        std::abort();
    }
}

void pollUnchanged()
{
    poll(replies[0]);
}

void pollChanged()
{
    poll(replies[turn ^= 1]);
}

void pollWrite()
{
    poll(echo);
}

void getData()
{
    unsigned char out[2 * polledWords];
    benchmark::DoNotOptimize(intf_getData(1, words, 0, polledWords, out));
}

void setData()
{
    static unsigned char value[2] = {1, 2};
    value[0] ^= 0xFF;
    intf_setData(1, words, 5, 1, value, 0);
}

void crc()
{
    benchmark::DoNotOptimize(crcOf(checkedBytes.data(), static_cast<int>(checkedBytes.size())));
}

// ---- what is put right after each call, outside its time --------------------------------------

void queueAnother()
{
    driver.burstCount = 0; // the next poll is a write again
    writeNewPlace();
}

void cutQueue()
{
    // In the longest queue the write took the last one's place.
    if (driver.writeList.size() < longestQueue) {
        driver.writeList.removeLast();
    }
}

// ---- the table -------------------------------------------------------------------------------

struct Measurement {
    const char* name;
    void (*prepare)(int size);
    void (*call)();
    void (*putRight)(); // or null
    std::vector<int> sizes;
};

const std::vector<int> unitCounts = {100, 1000, 10000, 100000, 200000};
const std::vector<int> writeCounts = {1, 10, 100, longestQueue};

const Measurement measurements[] = {
    {"keys: plan", shuffledKeys, plan, nullptr, {100, 1000, 10000, 100000}},
    {"units: poll, nothing changed", cachedUnits, pollUnchanged, nullptr, unitCounts},
    {"units: poll, all changed", cachedUnits, pollChanged, nullptr, unitCounts},
    {"units: getData", cachedUnits, getData, nullptr, unitCounts},
    {"units: setData", cachedUnits, setData, nullptr, unitCounts},
    {"writes: poll, one sent", queuedWrites, pollWrite, queueAnother, writeCounts},
    {"writes: getData", queuedWrites, getData, nullptr, writeCounts},
    {"writes: setData, a new place", queuedWrites, writeNewPlace, cutQueue, writeCounts},
    {"bytes: crc", someBytes, crc, nullptr, {8, 261}},
};

void measure(benchmark::State& state, const Measurement& measured)
{
    using Clock = std::chrono::steady_clock;
    measured.prepare(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        if (measured.putRight == nullptr) {
            measured.call();
            continue;
        }
        const auto begun = Clock::now();
        measured.call();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begun).count());
        measured.putRight();
    }
    const long before = allocationCount();
    measured.call();
    state.counters["allocations"] = static_cast<double>(allocationCount() - before);
    state.SetComplexityN(state.range(0));
}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(silence);
    for (const Measurement& measured : measurements) {
        auto* registered = benchmark::RegisterBenchmark(
            measured.name, [&measured](benchmark::State& state) { measure(state, measured); });
        for (const int size : measured.sizes) {
            registered->Arg(size);
        }
        registered->Complexity();
        if (measured.putRight != nullptr) {
            registered->UseManualTime();
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
