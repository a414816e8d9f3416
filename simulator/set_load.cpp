#include "simulator/set_load.h"

#include <QFile>
#include <QString>
#include <QStringList>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "line/failure.h"
#include "line/json_depth.h"
#include "line/json_error.h"
#include "line/replace_file.h"

namespace dov417::simulator {

namespace {

using Json = nlohmann::ordered_json;

// Values for consecutive items, checked; nothing has been stored yet.
struct Assignment {
    AddressRange where;
    std::vector<std::uint32_t> values;
};

std::optional<std::uint32_t> singleOf(const QString& text)
{
    bool isNumber = false;
    const float number = text.toFloat(&isNumber);
    if (!isNumber || !std::isfinite(number))
        return std::nullopt;
    std::uint32_t bits = 0;
    static_assert(sizeof number == sizeof bits);
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

std::optional<std::uint32_t> valueOf(const QString& written, Width width)
{
    const QString text = written.trimmed();
    const bool isHex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    if (width == Width::doubleWord && !isHex &&
        (text.contains(QLatin1Char('.')) || text.contains(QLatin1Char('e'), Qt::CaseInsensitive)))
        return singleOf(text);

    bool isNumber = false;
    const qlonglong number =
        isHex ? text.mid(2).toLongLong(&isNumber, 16) : text.toLongLong(&isNumber, 10);
    if (!isNumber || (isHex && number < 0))
        return std::nullopt;
    qlonglong lowest = 0;
    qlonglong highest = 1;
    if (width == Width::word) {
        lowest = INT16_MIN;
        highest = UINT16_MAX;
    } else if (width == Width::doubleWord) {
        lowest = INT32_MIN;
        highest = UINT32_MAX;
    }
    if (number < lowest || number > highest)
        return std::nullopt;
    return static_cast<std::uint32_t>(number & 0xFFFFFFFF);
}

const char* valueRule(Width width)
{
    switch (width) {
    case Width::bit:
        return "a bit is 0 or 1";
    case Width::word:
        return "a word is -32768 to 65535 or 0x0 to 0xFFFF";
    case Width::doubleWord:
        return "a double word is -2147483648 to 4294967295, 0x0 to 0xFFFFFFFF or a number with a "
               "point";
    }
    return "";
}

// One value fills the range, a list fits it; a list without an end of the range sets the end.
Assignment assignmentOf(const std::string& address, const QStringList& values)
{
    const std::string quoted = "\"" + address + "\": ";
    AddressRange where = parseAddressRange(address);
    if (values.size() > 1 && address.find("..") == std::string::npos) {
        const int units = where.last - where.first + 1;
        where.last = where.first + units * static_cast<int>(values.size()) - 1;
        if (!StationMemory::hasWords(where.area, where.firstWord(),
                                     where.lastWord() - where.firstWord() + 1))
            throw UsageFailure(quoted + "the values go past the end");
    }
    const int items = where.itemCount();
    if (values.size() != 1 && values.size() != items)
        throw UsageFailure(quoted + std::to_string(values.size()) + " values for " +
                           std::to_string(items) + " places");
    Assignment assignment{where, {}};
    for (int i = 0; i < items; ++i) {
        const QString& text = values.size() == 1 ? values[0] : values[i];
        const std::optional<std::uint32_t> value = valueOf(text, where.width);
        if (!value)
            throw UsageFailure(quoted + valueRule(where.width) + ", not \"" + text.toStdString() +
                               "\"");
        assignment.values.push_back(*value);
    }
    return assignment;
}

void requireStation(const Memory& memory, const Assignment& assignment)
{
    if (!memory.has(assignment.where.station))
        throw UsageFailure("there is no station " + std::to_string(assignment.where.station));
}

void store(Memory& memory, const Assignment& assignment)
{
    StationMemory& station = *memory.station(assignment.where.station);
    const AddressRange& where = assignment.where;
    int address = where.first;
    for (std::uint32_t value : assignment.values) {
        switch (where.width) {
        case Width::bit:
            station.setBit(where.area, address / 16, address % 16, value != 0);
            ++address;
            break;
        case Width::word:
            station.setWord(where.area, address, static_cast<std::uint16_t>(value & 0xFFFF));
            ++address;
            break;
        case Width::doubleWord:
            station.setDoubleWord(where.area, address, value);
            address += 2;
            break;
        }
    }
}

// A value of the file as it would be written in ADDRESS=VALUE.
QString textOf(const Json& value)
{
    if (value.is_boolean())
        return value.get<bool>() ? QStringLiteral("1") : QStringLiteral("0");
    if (value.is_string())
        return QString::fromStdString(value.get<std::string>());
    if (!value.is_number())
        throw UsageFailure("a value is a number, a text, true or false");
    return QString::fromStdString(value.dump());
}

QStringList textsOf(const Json& value)
{
    if (!value.is_array())
        return {textOf(value)};
    QStringList texts;
    for (const Json& element : value)
        texts.append(textOf(element));
    return texts;
}

void requireObject(const Json& value)
{
    if (!value.is_object())
        throw UsageFailure("a file is {\"STATION\": {\"REGISTER\": {\"ADDRESS\": VALUES}}}");
}

// Everything that the file says, or the first mistake.
std::vector<Assignment> assignmentsOf(const Json& file)
{
    std::vector<Assignment> assignments;
    requireObject(file);
    for (const auto& [station, registers] : file.items()) {
        requireObject(registers);
        for (const auto& [name, addresses] : registers.items()) {
            requireObject(addresses);
            for (const auto& [address, values] : addresses.items()) {
                std::string text = station;
                text.append("/").append(name).append(":").append(address);
                assignments.push_back(assignmentOf(text, textsOf(values)));
            }
        }
    }
    return assignments;
}

// Either all of the text's values or none of them.
void loadText(Memory& memory, const QByteArray& text)
{
    const std::vector<Assignment> assignments =
        assignmentsOf(Json::parse(text.begin(), text.end(), noDeeperThanAllowed<Json>()));
    for (const Assignment& assignment : assignments)
        requireStation(memory, assignment);
    for (const Assignment& assignment : assignments)
        store(memory, assignment);
}

const char* wordRegisterOf(Area area)
{
    switch (area) {
    case Area::I:
        return "I_W";
    case Area::Q:
        return "Q_W";
    case Area::M:
        return "M_W";
    case Area::R:
        return "R_W";
    case Area::T:
        return "T";
    case Area::C:
        return "C";
    }
    return "";
}

Json runsOf(const StationMemory& station, const AreaLayout& layout)
{
    Json runs = Json::object();
    Json* run = nullptr;
    for (int word = 0; word < layout.words; ++word) {
        const std::uint16_t value = station.word(layout.area, word);
        if (value == 0) {
            run = nullptr;
            continue;
        }
        if (!run) {
            const std::string key = std::to_string(word);
            runs[key] = Json::array();
            run = &runs[key];
        }
        run->push_back(value);
    }
    return runs;
}

} // namespace

AddressRange setValues(Memory& memory, const std::string& assignment)
{
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos)
        throw UsageFailure("\"" + assignment + "\": a value is set as in R_W:100=5 or M_bit:1.5=1");
    const QString values = QString::fromStdString(assignment.substr(equals + 1));
    const Assignment parsed =
        assignmentOf(assignment.substr(0, equals), values.split(QLatin1Char(',')));
    requireStation(memory, parsed);
    store(memory, parsed);
    return parsed.where;
}

void loadValues(Memory& memory, const std::string& fileName)
{
    QFile file(QString::fromStdString(fileName));
    if (!file.open(QIODevice::ReadOnly))
        throw UsageFailure(fileName + ": " + file.errorString().toStdString());
    try {
        loadText(memory, file.readAll());
    } catch (const Json::parse_error& exception) {
        throw UsageFailure(fileName + ": " + jsonErrorText(exception.what()));
    } catch (const Failure& failure) {
        throw UsageFailure(fileName + ": " + failure.what());
    }
}

void dumpValues(const Memory& memory, const std::string& fileName)
{
    Json dump = Json::object();
    for (int number : memory.stations()) {
        Json registers = Json::object();
        for (const AreaLayout& layout : areaLayouts()) {
            Json runs = runsOf(*memory.station(number), layout);
            if (!runs.empty())
                registers[wordRegisterOf(layout.area)] = std::move(runs);
        }
        dump[std::to_string(number)] = std::move(registers);
    }
    QString error;
    if (!replaceFile(QString::fromStdString(fileName),
                     QByteArray::fromStdString(dump.dump(1) + '\n'), &error))
        throw Failure(error.toStdString());
}

} // namespace dov417::simulator
