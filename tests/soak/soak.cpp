// dov417_soak COUNT [SEED]: driver and simulated controller in one process, COUNT transactions with
// mixed reads, writes of all types, condition reads, recipes, resets and a fault in every tenth
// reply. Ends with 0 when at the end cache and controller agree, every write is accounted for and
// memory has not grown; else with a sentence and 1.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "recipe_round.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "write_ledger.h"

using dov417::simulator::Area;

namespace {

enum {
    maxQueued = 60,
    settlingTransactions = 5000,
    allowedGrowth = 256 * 1024 // bytes: lists keep some spare room
};

std::uint64_t notices = 0;

void onChange(int, int station, QString& regName, int address)
{
    unsigned char out[4] = {0, 0, 0, 0};
    intf_getData(station, regName, address, 2, out);
    ++notices;
}

void saysNothing(QtMsgType, const QMessageLogContext&, const QString&) {}

struct Watched {
    int station;
    const char* regName;
    Area area;
    int address;
    int length;
};

const Watched watched[] = {
    {1, "I_W", Area::I, 0, 128},   {1, "Q_W", Area::Q, 0, 20},     {1, "Q_bit", Area::Q, 500, 40},
    {1, "M_W", Area::M, 0, 60},    {1, "M_bit", Area::M, 2040, 8}, {1, "R_bit", Area::R, 8000, 64},
    {1, "R_W", Area::R, 100, 50},  {1, "R_D", Area::R, 130, 20},   {1, "R_W", Area::R, 1000, 300},
    {1, "R_W", Area::R, 3990, 10}, {1, "T", Area::T, 0, 128},      {1, "C", Area::C, 100, 28},
    {2, "I_W", Area::I, 0, 60},    {2, "Q_W", Area::Q, 0, 60},     {2, "M_W", Area::M, 0, 128},
    {2, "R_W", Area::R, 100, 60},  {2, "R_W", Area::R, 500, 5},    {2, "R_bit", Area::R, 8000, 64},
    {2, "T", Area::T, 5, 4},       {2, "C", Area::C, 127, 1},      {2, "R_W", Area::R, 300, 4},
};

struct Tally {
    std::uint64_t transactions = 0;
    std::uint64_t accepted = 0;
    std::uint64_t bad = 0;
    std::uint64_t abandoned = 0;
    std::uint64_t byKind[7] = {};
};

class Soak {
public:
    explicit Soak(unsigned int seed)
        : random_(seed), memory_({1, 2}), controller_(memory_), faults_(tenPercent(), seed),
          block_(60117, 0), buffer_(300, 0), ledger_(memory_), recipe_(memory_, block_, buffer_)
    {
        intf_setAddrValueChangeCallBack(onChange);
        initialise();
    }

    void run(std::uint64_t count);
    void settle();
    void requireAgreement();
    void report() const;

private:
    static std::vector<dov417::simulator::FaultRule> tenPercent()
    {
        dov417::simulator::FaultRule rule;
        rule.kind = dov417::simulator::FaultKind::any;
        rule.probability = 0.1;
        return {rule};
    }

    void initialise();
    void plan();
    void hostActs();
    void controllerLives();
    bool transact(bool withFaults);
    QByteArray received(const QByteArray& request, bool withFaults);
    void requireCached(const Watched& range) const;
    static void requireCountedTwice(const _DATA_& unit);

    std::mt19937 random_;
    dov417::simulator::Memory memory_;
    dov417::simulator::Controller controller_;
    dov417::simulator::Faults faults_;
    std::vector<unsigned char> block_;
    std::vector<unsigned short> buffer_;
    QMutex mutex_;
    WriteLedger ledger_;
    RecipeRound recipe_;
    Tally tally_;
    int countedTwice_ = 0;
};

void Soak::initialise()
{
    intf_initProperty(block_.data(), 0, buffer_.data(), nullptr, "7#0#0#3#10", &mutex_);
    ledger_.reset();
    recipe_.reset();
    recipe_.plan();
    plan();
}

void Soak::plan()
{
    QList<KEY_ADDRESS> keys;
    for (const Watched& range : watched) {
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = range.station;
        key.regName = QString::fromLatin1(range.regName);
        key.address = range.address;
        key.length = range.length;
        keys.append(key);
    }
    if (intf_addrMerge(keys) < 10) {
        disagree(QStringLiteral("the plan is too short"));
    }
}

// The values that nobody writes change by themselves.
void Soak::controllerLives()
{
    const int station = 1 + static_cast<int>(random_() % 2);
    const int word = 1000 + static_cast<int>(random_() % 300);
    memory_.station(station)->setWord(Area::R, word, static_cast<std::uint16_t>(random_()));
    memory_.station(station)->setWord(Area::T, 20 + word % 60,
                                      static_cast<std::uint16_t>(random_()));
}

void Soak::hostActs()
{
    const int dice = static_cast<int>(random_() % 1000);
    if (dice < 250 && ledger_.queued() < maxQueued) {
        ledger_.writeOne(random_);
    } else if (dice < 300) {
        const Watched& range = watched[random_() % (sizeof(watched) / sizeof(watched[0]))];
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = range.station;
        key.regName = QString::fromLatin1(range.area == Area::R   ? "R_W"
                                          : range.area == Area::M ? "M_W"
                                                                  : "T");
        key.address = static_cast<int>(random_() % 100);
        key.length = 1 + static_cast<int>(random_() % 25);
        intf_addConditionRead(key, 3);
    } else if (dice < 400) {
        controllerLives();
    } else if (dice == 400) {
        recipe_.start(random_);
    } else if (dice == 401 && random_() % 50 == 0) {
        plan();
    } else if (dice == 402 && random_() % 20 == 0 && !recipe_.underWay()) {
        // Not in the middle of a recipe: the driver keeps its place in it over a reset.
        initialise();
    } else if (dice == 403) { // a screen full of entries at once
        for (int i = 0; i < maxQueued; ++i) {
            ledger_.writeOne(random_);
        }
    }
}

// What the host hands to the driver: late replies are thrown away before the next request, and
// what another station or function sent is not taken for the answer.
QByteArray Soak::received(const QByteArray& request, bool withFaults)
{
    const QByteArray reply = controller_.answer(request);
    if (!withFaults || reply.isEmpty()) {
        return reply;
    }
    const dov417::simulator::Transmission sent = faults_.apply(request, reply);
    QByteArray bytes = sent.echo;
    for (const dov417::simulator::Piece& piece : sent.pieces) {
        if (piece.delayMs < 100) {
            bytes.append(piece.bytes);
        }
    }
    if (bytes.size() >= 2 &&
        (bytes.at(0) != request.at(0) || (bytes.at(1) & 0x7F) != request.at(1))) {
        bytes.clear();
    }
    return bytes;
}

bool Soak::transact(bool withFaults)
{
    FRAME_PRO frame = FRAME_PRO();
    if (intf_getSendFrame(&frame) == 0) {
        return false;
    }
    const int kind = driver.sendKind;
    if (kind == 2) {
        ledger_.frameSent(frame);
    }
    QByteArray reply = received(
        QByteArray(reinterpret_cast<const char*>(frame.frame), frame.sendLength), withFaults);
    QString errorText;
    const int result = intf_dealRcvFrame(&reply, &errorText);
    ++tally_.transactions;
    ++tally_.byKind[kind];
    ++(result == 1 ? tally_.accepted : result == 8 ? tally_.bad : tally_.abandoned);
    if (result == 0 || errorText.isEmpty()) {
        disagree(QStringLiteral("a reply had no frame"));
    }
    if (kind == 2) {
        ledger_.frameEnded(frame, result);
    }
    recipe_.look(kind, result);
    return true;
}

void Soak::run(std::uint64_t count)
{
    for (std::uint64_t i = 0; i < count; ++i) {
        hostActs();
        if (!transact(true)) {
            disagree(QStringLiteral("nothing to send, with a plan"));
        }
        if (i % 1000 == 0) {
            ledger_.requireAgreement();
        }
    }
}

// Without faults and new work: the queues run empty, then every address is read once more.
void Soak::settle()
{
    for (int i = 0; i < settlingTransactions; ++i) {
        transact(false);
    }
}

void Soak::requireCached(const Watched& range) const
{
    std::vector<unsigned char> out(4096);
    intf_getData(range.station, QString::fromLatin1(range.regName), range.address, range.length,
                 out.data());
    const bool bits = QString::fromLatin1(range.regName).endsWith(QLatin1String("_bit"));
    const dov417::simulator::StationMemory& station = *memory_.station(range.station);
    for (int i = 0; i < range.length; ++i) {
        const int address = range.address + i;
        const size_t at = static_cast<size_t>(i);
        const bool same =
            bits ? (out[at] != 0) == station.bit(range.area, address / 16, address % 16)
                 : out[2 * at] + 256 * out[2 * at + 1] == station.word(range.area, address);
        if (!same) {
            disagree(QStringLiteral("%1/%2 %3 differs between cache and controller")
                         .arg(range.station)
                         .arg(QLatin1String(range.regName))
                         .arg(address));
        }
    }
}

void Soak::requireAgreement()
{
    ledger_.requireAgreement();
    if (ledger_.queued() != 0 || !driver.conditionList.isEmpty() || recipe_.underWay()) {
        disagree(QStringLiteral("work was left undone"));
    }
    if (controller_.counters().refused != 0 || controller_.counters().badFrames != 0) {
        disagree(QStringLiteral("the controller was asked for what it has not, or unreadably"));
    }
    for (const Watched& range : watched) {
        requireCached(range);
    }
    countedTwice_ = 0;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        if (driver.dataAreas.at(i).writePending != 0) {
            requireCountedTwice(driver.dataAreas.at(i));
            ++countedTwice_;
        }
    }
}

// A unit without a queued write is pending only where a bit was written again while the write
// before it still waited: its count never comes down. It shows what the controller acknowledged all
// the same.
void Soak::requireCountedTwice(const _DATA_& unit)
{
    const std::uint32_t secondWrites = 0xAAAAAAAA; // the upper one of each bit's two count bits
    if (unit.pendingBits == 0 || (unit.pendingBits & ~secondWrites) != 0 ||
        std::memcmp(unit.pendingValue, unit.deviceValue, 2) != 0) {
        disagree(QStringLiteral("%1/%2 %3 is still pending")
                     .arg(unit.station)
                     .arg(unit.area)
                     .arg(unit.address));
    }
}

void Soak::report() const
{
    const LedgerCounts& writes = ledger_.counts();
    std::printf("transactions %llu: %llu accepted, %llu bad, %llu given up; faults: %s\n",
                static_cast<unsigned long long>(tally_.transactions),
                static_cast<unsigned long long>(tally_.accepted),
                static_cast<unsigned long long>(tally_.bad),
                static_cast<unsigned long long>(tally_.abandoned), faults_.report().c_str());
    std::printf("frames: %llu of writes, %llu of condition reads, %llu of cyclic reads, %llu and "
                "%llu of recipes down and up\n",
                static_cast<unsigned long long>(tally_.byKind[2]),
                static_cast<unsigned long long>(tally_.byKind[3]),
                static_cast<unsigned long long>(tally_.byKind[4]),
                static_cast<unsigned long long>(tally_.byKind[5]),
                static_cast<unsigned long long>(tally_.byKind[6]));
    std::printf("writes asked for %llu: %llu confirmed, %llu replaced by newer ones, %llu executed "
                "without an echo, %llu given up before they were sent, %llu dropped by a reset\n",
                static_cast<unsigned long long>(writes.asked),
                static_cast<unsigned long long>(writes.confirmed),
                static_cast<unsigned long long>(writes.replaced),
                static_cast<unsigned long long>(writes.givenUp),
                static_cast<unsigned long long>(writes.unsent),
                static_cast<unsigned long long>(writes.reset));
    std::printf("recipes: %llu down, %llu up, %llu given up; changes announced: %llu\n",
                static_cast<unsigned long long>(recipe_.downloads()),
                static_cast<unsigned long long>(recipe_.uploads()),
                static_cast<unsigned long long>(recipe_.givenUp()),
                static_cast<unsigned long long>(notices));
    std::printf("units pending at the end for a bit whose write was counted twice: %d\n",
                countedTwice_);
}

std::size_t heapInUse()
{
    return mallinfo2().uordblks;
}

} // namespace

int main(int argc, char** argv)
{
    char* end = nullptr;
    const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], &end, 10) : 0;
    if (argc < 2 || argc > 3 || *end != 0 || count < 1000) {
        std::fprintf(stderr, "usage: dov417_soak COUNT [SEED]    (COUNT: 1000 or more)\n");
        return 2;
    }
    const unsigned int seed =
        argc > 2 ? static_cast<unsigned int>(std::strtoul(argv[2], nullptr, 10)) : 1;
    qInstallMessageHandler(saysNothing);
    Soak soak(seed);
    // The first part fills every list and unit once; from there on nothing may grow.
    soak.run(count / 10);
    soak.settle();
    soak.requireAgreement();
    const std::size_t before = heapInUse();
    soak.run(count - count / 10);
    soak.settle();
    soak.requireAgreement();
    const std::size_t after = heapInUse();
    soak.report();
    std::printf("heap in use: %zu bytes after the first tenth, %zu at the end\n", before, after);
    if (after > before + allowedGrowth) {
        disagree(QStringLiteral("memory has grown"));
    }
    std::printf("cache and controller agree, every write is accounted for\n");
    return 0;
}
