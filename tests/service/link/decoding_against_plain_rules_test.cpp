// The cache is searched as fast as it can be, and its list is open to the host. Here decoding and
// planning are held against a plain walk of the list, while the list is edited in every way.
#include <gmock/gmock.h>
#include <random>

#include "link/decoding.h"
#include "world.h"

namespace {

struct PlainUnit {
    int station;
    std::string area;
    int address;
    int device;
    bool pending;
    int viewFlags;
    unsigned int bits;
};

bool operator==(const PlainUnit& a, const PlainUnit& b)
{
    return a.station == b.station && a.area == b.area && a.address == b.address &&
           a.device == b.device && a.pending == b.pending && a.viewFlags == b.viewFlags &&
           a.bits == b.bits;
}

std::ostream& operator<<(std::ostream& out, const PlainUnit& one)
{
    return out << one.station << '/' << one.area << one.address << '=' << one.device
               << (one.pending ? " pending" : "") << " views " << one.viewFlags << " bits "
               << one.bits;
}

class PlainCache {
public:
    size_t find(int station, const std::string& area, int address)
    {
        for (size_t i = 0; i < units.size(); ++i) {
            if (units[i].station == station && units[i].area == area &&
                units[i].address == address) {
                return i;
            }
        }
        units.push_back({station, area, address, 0, false, 0, 0});
        return units.size() - 1;
    }

    void unwatch()
    {
        for (PlainUnit& one : units) {
            one.viewFlags = 0;
            one.bits = 0;
        }
    }

    void watch(const std::string& regName, int station, int address, int length)
    {
        const std::string area = regName.substr(0, regName.find('_'));
        if (regName == area + "_bit") {
            for (int bit = address; bit < address + length; ++bit) {
                units[find(station, area, bit / 16)].bits |= 1u << (bit % 16);
            }
        } else if (regName == area + "_D") {
            for (int i = 0; i < length / 2; ++i) {
                units[find(station, area, address + 2 * i)].viewFlags |= 2;
                units[find(station, area, address + 2 * i + 1)].viewFlags |= 4;
            }
        } else {
            for (int i = 0; i < length; ++i) {
                units[find(station, area, address + i)].viewFlags |= 1;
            }
        }
    }

    void receive(int station, const std::string& area, int address, int value, bool writeQueued)
    {
        PlainUnit& one = units[find(station, area, address)];
        if (one.device == value) {
            return;
        }
        const int changed = one.device ^ value;
        one.device = value;
        one.pending = one.pending && writeQueued;
        if (area == "T" || area == "C") {
            tell(one.viewFlags & 1, station, area, address);
            return;
        }
        for (int bit = 0; bit < 16; ++bit) {
            tell((changed >> bit & 1) && (one.bits >> bit & 1), station, area + "_bit",
                 address * 16 + bit);
        }
        tell(one.viewFlags & 1, station, area + "_W", address);
        tell(one.viewFlags & 2, station, area + "_D", address);
        tell((one.viewFlags & 4) && address >= 1, station, area + "_D", address - 1);
    }

    std::vector<PlainUnit> units;
    Notices told;

private:
    void tell(int watched, int station, const std::string& regName, int address)
    {
        if (watched != 0) {
            told.push_back({7, station, regName, address});
        }
    }
};

struct View {
    const char* regName;
    int index; // in the register table
    bool lowByteFirst;
};

const View views[] = {{"R_W", 7, false}, {"M_W", 6, true}, {"T", 9, false}, {"R_D", 8, false}};
const char* watchable[] = {"R_W", "R_D", "R_bit", "M_W", "M_bit", "T", "C"};

class DecodingAgainstPlainRules : public DriverTest {
protected:
    int upTo(int low, int high)
    {
        return std::uniform_int_distribution<int>(low, high)(engine);
    }

    int someUnit()
    {
        return upTo(0, static_cast<int>(driver.dataAreas.size()) - 1);
    }

    void decodeSomething()
    {
        const View& view = views[upTo(0, 3)];
        const std::string area(1, view.regName[0]);
        const int station = upTo(1, 2);
        const int address = upTo(0, 24);
        const int count = upTo(1, 24);
        const bool allNew = upTo(0, 3) == 0;
        QByteArray bytes = hex("01 03 00");
        std::vector<int> values;
        for (int i = 0; i < count; ++i) {
            int value = upTo(0, 65535);
            for (const PlainUnit& one : plain.units) {
                if (!allNew && upTo(0, 15) != 0 && one.station == station && one.area == area &&
                    one.address == address + i) {
                    value = one.device; // unchanged, so far as the first record goes
                    break;
                }
            }
            values.push_back(value);
            bytes.append(static_cast<char>(view.lowByteFirst ? value & 0xFF : value >> 8));
            bytes.append(static_cast<char>(view.lowByteFirst ? value >> 8 : value & 0xFF));
        }
        for (int i = 0; i < count; ++i) {
            plain.receive(station, area, address + i, values[static_cast<size_t>(i)],
                          !driver.writeList.isEmpty());
        }
        decodeValues(registerType(view.index), bytes, count, 3, station, address);
    }

    void planSomething()
    {
        QList<KEY_ADDRESS> keys;
        plain.unwatch();
        for (int i = upTo(0, 4); i > 0; --i) {
            const char* regName = watchable[upTo(0, 6)];
            const KEY_ADDRESS wanted = key(regName, upTo(0, 30), upTo(1, 12), upTo(1, 2));
            plain.watch(regName, wanted.stationNo, wanted.address, wanted.length);
            keys << wanted;
        }
        plan(keys);
    }

    // One edit of the list as a host could make it, in both caches.
    void editSomething()
    {
        if (plain.units.empty()) {
            return;
        }
        const int at = someUnit();
        const int other = someUnit();
        std::vector<PlainUnit>& units = plain.units;
        switch (upTo(0, 9)) {
        case 0:
            driver.dataAreas[at].address = units[static_cast<size_t>(at)].address = upTo(0, 30);
            break;
        case 1:
            driver.dataAreas[at].station = units[static_cast<size_t>(at)].station = upTo(1, 2);
            break;
        case 2:
            units[static_cast<size_t>(at)].area = upTo(0, 1) == 0 ? "R" : "M";
            driver.dataAreas[at].area = name(units[static_cast<size_t>(at)].area.c_str());
            break;
        case 3: { // a twin, before or behind
            const _DATA_ twin = driver.dataAreas.at(at);
            driver.dataAreas.insert(other, twin);
            const PlainUnit plainTwin = units[static_cast<size_t>(at)];
            units.insert(units.begin() + other, plainTwin);
            break;
        }
        case 4:
            driver.dataAreas.removeAt(at);
            units.erase(units.begin() + at);
            break;
        case 5:
            driver.dataAreas.move(at, other);
            units.insert(units.begin() + other, [&] {
                const PlainUnit moved = units[static_cast<size_t>(at)];
                units.erase(units.begin() + at);
                return moved;
            }());
            break;
        case 6:
            driver.dataAreas[at].writePending = 1;
            units[static_cast<size_t>(at)].pending = true;
            break;
        case 7:
            driver.dataAreas[at].deviceValue[0] = 0x77;
            driver.dataAreas[at].deviceValue[1] = 0x66;
            units[static_cast<size_t>(at)].device = 0x6677;
            break;
        case 8:
            keptUnits = units;
            kept = driver.dataAreas;
            break;
        case 9:
            if (upTo(0, 1) == 0) {
                units = keptUnits;
                driver.dataAreas = kept;
            } else {
                units.clear();
                driver.dataAreas.clear();
            }
            break;
        }
    }

    std::vector<PlainUnit> inDriver() const
    {
        std::vector<PlainUnit> all;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_& one = driver.dataAreas.at(i);
            all.push_back({one.station, text(one.area), one.address,
                           one.deviceValue[0] + one.deviceValue[1] * 256, one.writePending != 0,
                           one.viewFlags, one.bitMonitor});
        }
        return all;
    }

    std::mt19937 engine{20260417};
    PlainCache plain;
    std::vector<PlainUnit> keptUnits;
    QList<_DATA_> kept;
};

TEST_F(DecodingAgainstPlainRules, TheCacheAndTheNoticesAreTheSameWhateverIsDoneToTheList)
{
    for (int step = 0; step < 6000; ++step) {
        const int what = upTo(0, 9);
        if (what < 6) {
            decodeSomething();
        } else if (what < 7) {
            planSomething();
        } else if (what < 8) {
            driver.writeList.clear();
            if (upTo(0, 2) == 0) {
                driver.writeList.append(request("R_W", 1, 1));
            }
        } else {
            editSomething();
        }
        ASSERT_EQ(inDriver(), plain.units) << "step " << step << ", what " << what;
        ASSERT_EQ(notices(), plain.told) << "step " << step << ", what " << what;
        plain.told.clear();
    }
}

} // namespace
