// How the driver's costs grow: planning with the number of keys, everything else with the number of
// cached units and queued writes.
#include <QDebug>
#include <benchmark/benchmark.h>
#include <vector>

#include "allocation_count.h"
#include "crc.h"
#include "intf.h"

namespace {

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

// So many units in the cache, in stations of 4000 words, and one read of 128 words in the plan.
void cacheUnits(int units)
{
    initialise("0#0#0#3#128");
    std::vector<unsigned char> out(8000);
    const QString words = QString::fromLatin1("R_W");
    for (int station = 2; units > 128; ++station, units -= 4000) {
        intf_getData(station, words, 0, units < 4000 ? units : 4000, out.data());
    }
    QList<KEY_ADDRESS> keys;
    keys.append(wordKey(1, 0, 128));
    intf_addrMerge(keys);
}

QByteArray readReply(int words, int fill)
{
    QByteArray reply;
    reply.append(char(1)).append(char(3)).append(static_cast<char>(2 * words));
    reply.append(QByteArray(2 * words, static_cast<char>(fill)));
    std::vector<unsigned char> bytes(reply.begin(), reply.end());
    bytes.resize(bytes.size() + 2);
    appendCrc(bytes.data(), static_cast<int>(reply.size()));
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

void plan(benchmark::State& state)
{
    QList<KEY_ADDRESS> keys;
    const int count = static_cast<int>(state.range(0));
    for (int i = 0; i < count; ++i) {
        const int shuffled = static_cast<int>((static_cast<long long>(i) * 7919) % count);
        keys.append(wordKey(1 + shuffled / 1300, 3 * (shuffled % 1300), 2));
    }
    for (auto _ : state) {
        initialise("0#0#0#3#10");
        benchmark::DoNotOptimize(intf_addrMerge(keys));
    }
    state.SetComplexityN(count);
}

void pollUnchanged(benchmark::State& state)
{
    cacheUnits(static_cast<int>(state.range(0)));
    QByteArray reply = readReply(128, 0);
    QString errorText;
    static FRAME_PRO frame;
    long before = 0;
    for (auto _ : state) {
        before = allocationCount();
        intf_getSendFrame(&frame);
        benchmark::DoNotOptimize(intf_dealRcvFrame(&reply, &errorText));
    }
    state.counters["allocations"] = static_cast<double>(allocationCount() - before);
    state.SetComplexityN(state.range(0));
}

void pollChanged(benchmark::State& state)
{
    cacheUnits(static_cast<int>(state.range(0)));
    QByteArray replies[2] = {readReply(128, 1), readReply(128, 2)};
    QString errorText;
    static FRAME_PRO frame;
    int turn = 0;
    for (auto _ : state) {
        intf_getSendFrame(&frame);
        benchmark::DoNotOptimize(intf_dealRcvFrame(&replies[turn ^= 1], &errorText));
    }
    state.SetComplexityN(state.range(0));
}

void getData(benchmark::State& state)
{
    cacheUnits(static_cast<int>(state.range(0)));
    const QString words = QString::fromLatin1("R_W");
    unsigned char out[256];
    for (auto _ : state) {
        intf_getData(1, words, 0, 128, out);
        benchmark::DoNotOptimize(out);
    }
    state.SetComplexityN(state.range(0));
}

void setDataUnits(benchmark::State& state)
{
    cacheUnits(static_cast<int>(state.range(0)));
    const QString words = QString::fromLatin1("R_W");
    unsigned char value[2] = {1, 2};
    for (auto _ : state) {
        value[0] ^= 0xFF;
        intf_setData(1, words, 5, 1, value, 0);
    }
    state.SetComplexityN(state.range(0));
}

// A write to a place that is not queued yet is the longest search; the queue is cut back each time.
void setDataQueued(benchmark::State& state)
{
    cacheUnits(128);
    const QString words = QString::fromLatin1("R_W");
    unsigned char value[2] = {1, 2};
    const int queued = static_cast<int>(state.range(0));
    for (int i = 0; i < queued; ++i) {
        intf_setData(1, words, 1000 + i, 1, value, 0);
    }
    int address = 2000;
    for (auto _ : state) {
        intf_setData(1, words, address, 1, value, 0);
        address = 2000 + (address + 1) % 1000;
        if (driver.writeList.size() > queued && driver.writeList.size() <= 512) {
            state.PauseTiming();
            driver.writeList.removeLast();
            state.ResumeTiming();
        }
    }
    state.SetComplexityN(state.range(0));
}

void crc(benchmark::State& state)
{
    std::vector<unsigned char> bytes(static_cast<size_t>(state.range(0)), 0x5A);
    for (auto _ : state) {
        benchmark::DoNotOptimize(crcOf(bytes.data(), static_cast<int>(bytes.size())));
    }
}

BENCHMARK(plan)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000)->Complexity();
BENCHMARK(pollUnchanged)->Arg(128)->Arg(10000)->Arg(200000)->Complexity();
BENCHMARK(pollChanged)->Arg(128)->Arg(10000)->Arg(200000)->Complexity();
BENCHMARK(getData)->Arg(128)->Arg(10000)->Arg(200000)->Complexity();
BENCHMARK(setDataUnits)->Arg(128)->Arg(10000)->Arg(200000)->Complexity();
BENCHMARK(setDataQueued)->Arg(1)->Arg(10)->Arg(100)->Arg(513)->Complexity();
BENCHMARK(crc)->Arg(8)->Arg(261);

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(silence);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
