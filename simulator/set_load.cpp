#include "simulator/set_load.h"

#include <QFile>
#include <QStringList>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>

#include "line/replace_file.h"

namespace dov417::simulator {

namespace {

using Json = nlohmann::ordered_json;

// Values for consecutive items, checked; nothing has been stored yet.
struct Assignment {
    AddressRange where;
    std::vector<std::uint32_t> values;
};

bool refuse(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

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
std::optional<Assignment> assignmentOf(const QString& address, const QStringList& values,
                                       QString* error)
{
    std::optional<AddressRange> where = parseAddressRange(address, error);
    if (!where)
        return std::nullopt;
    if (values.size() > 1 && !address.contains(QLatin1String(".."))) {
        const int units = where->last - where->first + 1;
        where->last = where->first + units * static_cast<int>(values.size()) - 1;
        if (!StationMemory::hasWords(where->area, where->firstWord(),
                                     where->lastWord() - where->firstWord() + 1)) {
            refuse(error, QStringLiteral("\"%1\": the values go past the end").arg(address));
            return std::nullopt;
        }
    }
    const int items = where->itemCount();
    if (values.size() != 1 && values.size() != items) {
        refuse(error, QStringLiteral("\"%1\": %2 values for %3 places")
                          .arg(address)
                          .arg(values.size())
                          .arg(items));
        return std::nullopt;
    }
    Assignment assignment{*where, {}};
    for (int i = 0; i < items; ++i) {
        const QString& text = values.size() == 1 ? values[0] : values[i];
        const std::optional<std::uint32_t> value = valueOf(text, where->width);
        if (!value) {
            refuse(error, QStringLiteral("\"%1\": %2, not \"%3\"")
                              .arg(address, QLatin1String(valueRule(where->width)), text));
            return std::nullopt;
        }
        assignment.values.push_back(*value);
    }
    return assignment;
}

bool isHere(const Memory& memory, const Assignment& assignment, QString* error)
{
    if (memory.has(assignment.where.station))
        return true;
    return refuse(error, QStringLiteral("there is no station %1").arg(assignment.where.station));
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

// A value of the file as it would be written after --set.
QString textOf(const Json& value)
{
    if (value.is_boolean())
        return value.get<bool>() ? QStringLiteral("1") : QStringLiteral("0");
    if (value.is_string())
        return QString::fromStdString(value.get<std::string>());
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

// Everything that the file says, or nothing and the first mistake.
std::optional<std::vector<Assignment>> assignmentsOf(const Json& file, QString* error)
{
    const QString form =
        QStringLiteral("a file is {\"STATION\": {\"REGISTER\": {\"ADDRESS\": VALUES}}}");
    std::vector<Assignment> assignments;
    if (!file.is_object()) {
        refuse(error, form);
        return std::nullopt;
    }
    for (const auto& [station, registers] : file.items()) {
        if (!registers.is_object()) {
            refuse(error, form);
            return std::nullopt;
        }
        for (const auto& [name, addresses] : registers.items()) {
            if (!addresses.is_object()) {
                refuse(error, form);
                return std::nullopt;
            }
            for (const auto& [address, values] : addresses.items()) {
                const QString text = QString::fromStdString(station) + QLatin1Char('/') +
                                     QString::fromStdString(name) + QLatin1Char(':') +
                                     QString::fromStdString(address);
                const std::optional<Assignment> assignment =
                    assignmentOf(text, textsOf(values), error);
                if (!assignment)
                    return std::nullopt;
                assignments.push_back(*assignment);
            }
        }
    }
    return assignments;
}

// "[json.exception.parse_error.101] parse error at line 3, column 5: ..." without its brackets.
QString parseErrorText(const Json::parse_error& exception)
{
    const QString text = QString::fromUtf8(exception.what());
    return text.mid(text.indexOf(QLatin1Char(']')) + 2);
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

bool setValues(Memory& memory, const QString& assignment, QString* error, AddressRange* where)
{
    const auto equals = assignment.indexOf(QLatin1Char('='));
    if (equals < 0)
        return refuse(error, QStringLiteral("\"%1\": a value is set as in R_W:100=5 or "
                                            "M_bit:1.5=1")
                                 .arg(assignment));
    const std::optional<Assignment> parsed = assignmentOf(
        assignment.left(equals), assignment.mid(equals + 1).split(QLatin1Char(',')), error);
    if (!parsed || !isHere(memory, *parsed, error))
        return false;
    store(memory, *parsed);
    if (where)
        *where = parsed->where;
    return true;
}

bool loadValues(Memory& memory, const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(error, QStringLiteral("%1: %2").arg(fileName, file.errorString()));
    const QByteArray text = file.readAll();

    QString reason;
    std::optional<std::vector<Assignment>> assignments;
    try {
        assignments = assignmentsOf(Json::parse(text.begin(), text.end()), &reason);
    } catch (const Json::parse_error& exception) {
        reason = parseErrorText(exception);
    }
    if (!assignments)
        return refuse(error, QStringLiteral("%1: %2").arg(fileName, reason));
    for (const Assignment& assignment : *assignments) {
        if (!isHere(memory, assignment, &reason))
            return refuse(error, QStringLiteral("%1: %2").arg(fileName, reason));
    }
    for (const Assignment& assignment : *assignments)
        store(memory, assignment);
    return true;
}

bool dumpValues(const Memory& memory, const QString& fileName, QString* error)
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
    return replaceFile(fileName, QByteArray::fromStdString(dump.dump(1) + '\n'), error);
}

} // namespace dov417::simulator
