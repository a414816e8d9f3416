#include "ledger.h"

#include <QString>
#include <algorithm>

#include "intf.h"

namespace {

enum {
    maxWaiting = 200, // with the repeated places, twice each at most, below what the queue takes
    repeatedEvery = 16
};

const PlaceKind kinds[] = {
    {"R_W", 0, 1200, 0x0500, false, false}, {"R_bit", 1200 * 16, 800, 0x0500, true, false},
    {"M_bit", 0, 640, 0x1000, true, true},  {"C", 0, 128, 0x0200, false, false},
    {"Q_W", 0, 60, 0x0800, false, true},
};

// Different at each place, so that a value that went astray shows.
int valueOf(int index, int turn)
{
    return (31 * index + turn) & 0xFFFF;
}

int inPlant(const Place& place, const Plant& plant)
{
    const PlaceKind& kind = *place.kind;
    if (kind.bit) {
        return kind.coils ? plant.coil(place.station, kind.base + place.address)
                          : plant.reg(place.station, kind.base + place.address / 16) >>
                                    (place.address % 16) &
                                1;
    }
    if (!kind.coils) {
        return plant.reg(place.station, kind.base + place.address);
    }
    int word = 0;
    for (int bit = 0; bit < 16; ++bit) {
        word |= plant.coil(place.station, kind.base + 16 * place.address + bit) ? 1 << bit : 0;
    }
    return word;
}

int inCache(const Place& place)
{
    unsigned char out[2] = {0, 0};
    intf_getData(place.station, QString::fromLatin1(place.kind->regName), place.address, 1, out);
    return place.kind->bit ? out[0] : out[0] | out[1] << 8;
}

} // namespace

// Neighbours have different owners: bits of one word are written by all threads.
Ledger::Ledger(int threads) : owned_(static_cast<size_t>(threads)), waiting_(0)
{
    for (int station = 1; station <= Plant::stations; ++station) {
        for (const PlaceKind& kind : kinds) {
            for (int i = 0; i < kind.count; ++i) {
                const int index = static_cast<int>(places_.size());
                const bool repeated = !kind.bit && index / threads % repeatedEvery == 0;
                places_.push_back({&kind, station, kind.first + i, repeated, 0, 0, 0});
                Owned& owned = owned_[static_cast<size_t>(index % threads)];
                (repeated ? owned.repeated : owned.once).push_back(index);
            }
        }
    }
}

Place* Ledger::choose(int thread, bool repeatedToo, bool bitsToo, std::mt19937& random)
{
    Owned& owned = owned_[static_cast<size_t>(thread)];
    if (repeatedToo && random() % 2 == 0) {
        return &places_[static_cast<size_t>(owned.repeated[random() % owned.repeated.size()])];
    }
    if (owned.nextOnce == owned.once.size() || waiting_ >= maxWaiting) {
        return nullptr;
    }
    Place& place = places_[static_cast<size_t>(owned.once[owned.nextOnce])];
    if (place.kind->bit && !bitsToo) {
        return nullptr;
    }
    ++owned.nextOnce;
    return &place;
}

std::vector<unsigned char> Ledger::ask(Place& place)
{
    ++place.asked;
    if (!place.repeated) {
        ++waiting_;
    }
    if (place.kind->bit) {
        return {1, 0};
    }
    const int value = valueOf(static_cast<int>(&place - places_.data()), place.asked);
    return {static_cast<unsigned char>(value & 0xFF), static_cast<unsigned char>(value >> 8)};
}

int Ledger::indexOf(const VARIABLE& request) const
{
    int index = 0;
    for (int station = 1; station <= Plant::stations; ++station) {
        for (const PlaceKind& kind : kinds) {
            const int i = request.address - kind.first;
            if (request.stationNo == station && i >= 0 && i < kind.count &&
                request.regName == QLatin1String(kind.regName)) {
                return index + i;
            }
            index += kind.count;
        }
    }
    return -1;
}

void Ledger::executed(const FRAME_PRO& frame)
{
    const int index = frame.frame[1] < 5 ? -1 : indexOf(frame.request);
    if (index < 0) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    Place& place = places_[static_cast<size_t>(index)];
    const unsigned char* data = frame.request.data;
    const int turn =
        place.kind->bit ? data[0] : ((data[0] | data[1] << 8) - valueOf(index, 0)) & 0xFFFF;
    if (turn <= place.newest) {
        outOfTurn_ = "a write was executed twice, or after a newer one";
    }
    place.newest = std::max(place.newest, turn);
    ++place.executed;
    if (!place.repeated && place.executed == 1) {
        --waiting_;
    }
}

QList<KEY_ADDRESS> Ledger::keys() const
{
    QList<KEY_ADDRESS> all;
    for (int station = 1; station <= Plant::stations; ++station) {
        for (const PlaceKind& kind : kinds) {
            KEY_ADDRESS key = KEY_ADDRESS();
            key.stationNo = station;
            key.regName = QString::fromLatin1(kind.regName);
            key.address = kind.first;
            key.length = kind.count;
            all.append(key);
        }
    }
    return all;
}

std::string Ledger::named(const Place& place, const char* fault) const
{
    return std::to_string(place.station) + "/" + place.kind->regName + " " +
           std::to_string(place.address) + " " + fault;
}

std::string Ledger::fault() const
{
    for (const Place& place : places_) {
        if (place.newest != place.asked) {
            return named(place, "was written last by a write that was never executed");
        }
    }
    return "";
}

std::string Ledger::faultInTurn(const Plant& plant, bool readAgain) const
{
    if (!outOfTurn_.empty()) {
        return outOfTurn_;
    }
    for (size_t i = 0; i < places_.size(); ++i) {
        const Place& place = places_[i];
        const int value = place.asked == 0  ? 0
                          : place.kind->bit ? 1
                                            : valueOf(static_cast<int>(i), place.asked);
        if (inPlant(place, plant) != value) {
            return named(place, "is not in the plant as it was written");
        }
        if ((readAgain || !place.kind->bit) && inCache(place) != value) {
            return named(place, "is not in the cache as it was written");
        }
    }
    for (int i = 0; readAgain && i < driver.dataAreas.size(); ++i) {
        if (driver.dataAreas.at(i).writePending != 0 && driver.dataAreas.at(i).address < 2000) {
            return "a written unit still awaits an answer";
        }
    }
    return "";
}

void Ledger::count(WriteCounts& counts) const
{
    for (const Place& place : places_) {
        counts.asked += static_cast<std::uint64_t>(place.asked);
        counts.executed += static_cast<std::uint64_t>(place.executed);
        counts.replaced += static_cast<std::uint64_t>(std::max(0, place.asked - place.executed));
    }
}
