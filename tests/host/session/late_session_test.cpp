// A session, its link and the driver on a bus of stations that answer late, asked for this and that
// at random. Each value that is shown names its station and its address, or counts the reads of its
// station, so that a wrong one and an old one are recognised by themselves.
//
// DOV417_LATE_SECONDS makes it longer, DOV417_LATE_SEED begins with another seed, DOV417_LATE_SEEDS
// takes so many of them.
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "late_bus.h"
#include "line/frame_length.h"
#include "loaded_library.h"
#include "pty_slave.h"
#include "session/session.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int firstRegister = 0x500; // R_W:0 on the line
constexpr int stationCount = 3;
constexpr int lastCounted = 60; // R_W from 0 on that name themselves or count

int fromEnvironment(const char* name, int otherwise)
{
    const char* const text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

// The bus at the far end of a pseudo-terminal.
class LateFarEnd {
public:
    explicit LateFarEnd(unsigned seed) : bus(seed)
    {
        bus.wire.baudRate = 115200;
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this]() { speak(); });
        slave.arrived = [this](const QByteArray& bytes) { hear(bytes); };
    }

    PtySlave slave;
    LateBus bus;

private:
    void hear(const QByteArray& bytes)
    {
        pending_ += bytes;
        for (int length = lengthOfRequest(pending_); length > 0 && pending_.size() >= length;
             length = lengthOfRequest(pending_)) {
            bus.send(pending_.left(length), Clock::now());
            pending_.remove(0, length);
        }
        speak();
    }

    void speak()
    {
        const QByteArray bytes = bus.arrived(Clock::now());
        if (!bytes.isEmpty())
            slave.send(bytes);
        const Clock::time_point next = bus.nextEvent();
        if (next != Clock::time_point::max())
            timer_.start(static_cast<int>(std::max<long long>(
                0, std::chrono::ceil<milliseconds>(next - Clock::now()).count())));
    }

    QByteArray pending_;
    QTimer timer_;
};

class LateSession : public LoadedLibrary, public ::testing::WithParamInterface<int> {
protected:
    LateSession()
        : seed(static_cast<unsigned>(GetParam())), farEnd(seed), bus(farEnd.bus), chance(seed)
    {
        for (int number = 1; number <= stationCount; ++number) {
            LateStation& station = bus.stations[number];
            const int usual = between(1, 15);
            const int rare = number == 1 ? usual : between(25, 90); // the time-out is 20 ms
            station.delay = [this, usual, rare]() -> Micros {
                return milliseconds(bus.share() < 0.2 ? bus.between(usual, rare) : usual);
            };
            station.loses = station.garbles = station.cuts = share() < 0.5 ? 0 : 0.02;
            station.dropsWhenAskedAgain = share() < 0.3;
            station.diagnostics = between(-1, 1);
        }
        line.device = farEnd.slave.port();
        line.wire.baudRate = 115200;
        line.timeout = milliseconds(20);
        line.maxTimeout = milliseconds(200);
        line.replyGap = milliseconds(15);
        line.maxProbePause = milliseconds(100);
        line.maxRegisters = share() < 0.5 ? learnedMaximum : 5;
        session = std::make_unique<Session>(library, SessionSettings{3, between(0, 20)});
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this](const ViewChanges& changes) {
                             for (const ViewChange& change : changes)
                                 if (change.view.quality() == Quality::good)
                                     show(change.view);
                         });
        schedule_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&schedule_, &QTimer::timeout, &schedule_, [this]() { act(); });
    }

    ~LateSession() override
    {
        valuesInAll += values;
    }
    static void TearDownTestSuite()
    {
        std::printf("%lld values in all\n", valuesInAll);
    }

    int between(int low, int high)
    {
        return std::uniform_int_distribution<>(low, high)(chance);
    }
    double share()
    {
        return std::uniform_real_distribution<>(0, 1)(chance);
    }

    static Address words(int station, int first, int count)
    {
        Address address;
        address.station = station;
        address.regName = "R_W";
        address.first = first;
        address.length = count;
        return address;
    }
    static int written(int place)
    {
        return LateBus::firstWritten - firstRegister + place;
    }

    Address any(int most)
    {
        const int station = between(1, stationCount);
        return share() < 0.3 ? words(station, written(between(0, 3)), 1)
                             : words(station, between(0, lastCounted), between(1, most));
    }

    void watchAnything()
    {
        std::vector<Address> addresses;
        for (int i = between(1, 12); i > 0; --i)
            addresses.push_back(any(8));
        session->watch(addresses);
    }

    void upload()
    {
        const Address asked = any(8);
        session->transferRecipe(layOutRecipe({asked}), RecipeDirection::upload, {},
                                [this, asked](const Result& result, const RecipeWords& words) {
                                    if (!result.accepted)
                                        return;
                                    ++recipes;
                                    for (int i = 0; i < asked.length; ++i)
                                        show(asked.station, asked.first + i,
                                             words.at(static_cast<std::size_t>(i)));
                                });
    }

    void confirmed(int station, int place, int value)
    {
        const std::size_t at = lastPlace(station, place, value);
        if (at == 0)
            wrong("a write is confirmed that was not done");
        place_[{station, place}] = std::max(place_[{station, place}], at);
    }

    void writeSomething()
    {
        const int station = between(1, stationCount);
        const int place = between(0, 3);
        Address address = words(station, written(place), 1);
        if (share() < 0.3) { // the other bits are read before, and stay
            address.width = Width::bit;
            address.regName = "R_bit";
            address.first = 16 * address.first + between(0, 15);
            session->write({address, {static_cast<unsigned char>(between(0, 1))}},
                           [this](const Result& result) { writes += result.accepted ? 1 : 0; });
            return;
        }
        address.length = between(1, 4 - place);
        std::vector<unsigned char> data;
        std::vector<int> all;
        for (int i = 0; i < address.length; ++i) {
            all.push_back(++lastValue_ & 0x7FFF);
            data.push_back(static_cast<unsigned char>(all.back() & 0xFF));
            data.push_back(static_cast<unsigned char>(all.back() >> 8));
        }
        session->write({address, data}, [this, station, place, all](const Result& result) {
            if (!result.accepted)
                return;
            ++writes;
            for (std::size_t i = 0; i < all.size(); ++i)
                confirmed(station, place + static_cast<int>(i), all.at(i));
        });
    }

    void act()
    {
        const double what = share();
        if (what < 0.30)
            watchAnything();
        else if (what < 0.60)
            writeSomething();
        else if (what < 0.90)
            session->readOnce(any(8),
                              [this](const Result& result) { reads += result.accepted ? 1 : 0; });
        else if (what < 0.93)
            upload();
        else if (what < 0.95)
            session->endRequests("enough");
        else
            session->setSettings({between(1, 4), between(0, 20)});
        if (share() < 0.02) {
            session->close();
            session->open(line);
            watchAnything();
        }
    }

    // 1 for the first value that it has held, and so on; 0: none.
    std::size_t lastPlace(int station, int place, int value) const
    {
        const auto& registers = bus.stations.at(station).written;
        const auto found = registers.find(LateBus::firstWritten + place);
        if (found == registers.end())
            return 0;
        const auto& held = found->second;
        return static_cast<std::size_t>(
            std::distance(std::find(held.rbegin(), held.rend(), value), held.rend()));
    }

    void show(const View& view)
    {
        show(view.address.station, view.address.first, view.value.at(0) + 256 * view.value.at(1));
    }

    void show(int station, int word, int value)
    {
        ++values;
        const int address = firstRegister + word;
        const std::string text = std::to_string(station) + "/R_W:" + std::to_string(word) + " = " +
                                 std::to_string(value);
        if (address >= LateBus::firstWritten) {
            const int place = address - LateBus::firstWritten;
            const std::size_t at = lastPlace(station, place, value);
            std::size_t& last = place_[{station, place}];
            if (at == 0 && value != 0)
                wrong(text + ": it has never held that");
            else if (at < last)
                wrong(text + ": it held that before what was shown last, or written");
            last = std::max(last, at);
        } else if ((address & 1) != 0) {
            // What is read in parts is of several moments.
            const bool isOfOne = line.maxRegisters == learnedMaximum;
            int& last = counter_[{station, isOfOne ? 0 : word}];
            if (value < last || value > bus.stations.at(station).counter)
                wrong(text + ": the counter was " + std::to_string(last) + ", and is " +
                      std::to_string(bus.stations.at(station).counter));
            last = std::max(last, value);
        } else if (value != LateBus::ownValue(station, address)) {
            wrong(text + ": another address, or another station");
        }
    }

    void wrong(const std::string& text)
    {
        ADD_FAILURE() << "seed " << seed << ", value " << values << ": " << text;
    }

    const unsigned seed;
    LateFarEnd farEnd;
    LateBus& bus;
    std::mt19937 chance;
    LineSettings line;
    std::unique_ptr<Session> session;
    QTimer schedule_;
    static inline long long valuesInAll = 0;
    long long values = 0;
    long long writes = 0; // confirmed
    long long recipes = 0;
    long long reads = 0; // that were asked for once, and answered

private:
    std::map<std::pair<int, int>, std::size_t> place_; // shown or confirmed, by station and place
    std::map<std::pair<int, int>, int> counter_;       // shown, by station, and word
    int lastValue_ = 0;
};

TEST_P(LateSession, ShowsNoValueThatTheControllerDidNotHoldThere)
{
    ASSERT_TRUE(session->open(line).accepted);
    watchAnything();
    schedule_.start(40);
    bool isOver = false;
    QTimer::singleShot(seconds(fromEnvironment("DOV417_LATE_SECONDS", 5)), &schedule_,
                       [&isOver]() { isOver = true; });
    while (!isOver)
        waitUntil([&isOver]() { return isOver; }); // a minute at a time
    std::printf("seed %u: %lld values shown, %lld writes confirmed, %lld reads answered, "
                "%lld recipes, %lld markers, %d doubts\n",
                seed, values, writes, reads, recipes, session->statistics().markers,
                session->doubts());
    EXPECT_GT(values, 20);
    EXPECT_GT(writes, 0);
    EXPECT_GT(reads, 0);
    EXPECT_EQ(session->doubts(), 0);
}

const int firstSeed = fromEnvironment("DOV417_LATE_SEED", 1);
INSTANTIATE_TEST_SUITE_P(Of, LateSession,
                         ::testing::Range(firstSeed,
                                          firstSeed + fromEnvironment("DOV417_LATE_SEEDS", 1)),
                         [](const auto& each) { return "Seed" + std::to_string(each.param); });

} // namespace

} // namespace dov417
