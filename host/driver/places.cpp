#include "driver/places.h"

#include <optional>

#include "driver/registers.h"
#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int anyStation = 1;
constexpr const char* mergingProperty = "0#0#0#1#2"; // a merge gap of 2: both words in one write
constexpr int minRequestLength = 8;
constexpr int maxShortNumber = 9999; // behind its kind, in five digits

void startAnew(const Library& library)
{
    int result = 0;
    library.intf_setAddrValueChangeCallBack(nullptr);
    library.intf_initProperty(nullptr, 0, nullptr, &result, mergingProperty, nullptr);
}

// Nothing where the driver has none to send. A poll that ends a burst of writes returns nothing: it
// is asked once more.
std::optional<QByteArray> nextFrame(const Library& library)
{
    FRAME_PRO frame = FRAME_PRO();
    for (int attempt = 0; attempt < 2; ++attempt)
        if (library.intf_getSendFrame(&frame) == 1 && frame.sendLength >= minRequestLength)
            return QByteArray(reinterpret_cast<const char*>(frame.frame), frame.sendLength);
    return std::nullopt;
}

std::optional<QByteArray> readFrame(const Library& library, const RegisterType& type)
{
    startAnew(library);
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = anyStation;
    key.regName = QString::fromStdString(type.name);
    key.length = type.width == Width::doubleWord ? 2 : 1;
    key.bitFlag = type.width == Width::bit ? bitItems : 0;
    QList<KEY_ADDRESS> keys;
    keys.append(key);
    library.intf_addrMerge(keys);
    return nextFrame(library);
}

// A bit of a register is read first and patched: what was read is 0.
std::optional<QByteArray> writeFrame(const Library& library, const RegisterType& type, int length)
{
    startAnew(library);
    unsigned char data[4] = {1, 0, 0, 0};
    library.intf_setData(anyStation, QString::fromStdString(type.name), 0, length, data, 0);
    std::optional<QByteArray> frame = nextFrame(library);
    if (!frame || functionOf(*frame) != readRegisters)
        return frame;
    QByteArray reply = withCrc(QByteArray::fromHex("0103020000"));
    QString description;
    library.intf_dealRcvFrame(&reply, &description);
    return nextFrame(library);
}

int unitCount(const RegisterType& type, bool coils)
{
    const QString highest = QString::fromStdString(type.highest);
    const int words =
        highest.section(QLatin1Char('.'), 0, 0).toInt() + (type.width == Width::doubleWord ? 2 : 1);
    return coils ? words * bitsPerWord : words;
}

} // namespace

std::vector<RegisterPlace> learnPlaces(const Library& library)
{
    const DriverClaim claim(library);
    std::vector<RegisterPlace> places;
    for (const RegisterType& type : registerTypes(library)) {
        const auto read = readFrame(library, type);
        if (!read)
            continue;
        RegisterPlace place;
        place.regName = type.name;
        place.readFunction = functionOf(*read);
        place.coils = place.readFunction == readCoils;
        place.first = wordAt(*read, addressIndex);
        place.count = unitCount(type, place.coils);
        const int one = type.width == Width::doubleWord ? 2 : 1;
        for (const int length : {one, type.width == Width::bit ? 1 : 2})
            if (const auto write = writeFrame(library, type, length))
                place.writeFunctions.insert(functionOf(*write));
        places.push_back(place);
    }
    startAnew(library);
    return places;
}

std::string prefixedNumber(bool coils, int number, int last)
{
    const std::string digits = std::to_string(number + 1);
    const std::size_t width = last + 1 > maxShortNumber ? 5 : 4;
    const std::string zeros(width > digits.size() ? width - digits.size() : 0, '0');
    return (coils ? "0" : "4") + zeros + digits;
}

} // namespace dov417
