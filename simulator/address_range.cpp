#include "simulator/address_range.h"

#include <QString>
#include <QStringList>
#include <optional>

#include "line/failure.h"
#include "line/frame_bytes.h"

namespace dov417::simulator {

namespace {

struct RegisterName {
    const char* name;
    Area area;
    Width width;
};
constexpr RegisterName registerNames[] = {
    {"I_bit", Area::I, Width::bit},      {"Q_bit", Area::Q, Width::bit},
    {"M_bit", Area::M, Width::bit},      {"R_bit", Area::R, Width::bit},
    {"I_W", Area::I, Width::word},       {"Q_W", Area::Q, Width::word},
    {"M_W", Area::M, Width::word},       {"R_W", Area::R, Width::word},
    {"R_D", Area::R, Width::doubleWord}, {"T", Area::T, Width::word},
    {"C", Area::C, Width::word},
};

const RegisterName* registerOf(const QString& name)
{
    for (const RegisterName& entry : registerNames) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

// Digits and nothing else: no sign, no blank.
std::optional<int> numberOf(const QString& text)
{
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return std::nullopt;
    }
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber ? std::optional<int>(number) : std::nullopt;
}

std::optional<int> addressOf(const QString& text, Width width)
{
    if (width != Width::bit)
        return numberOf(text);
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return std::nullopt;
    const std::optional<int> word = numberOf(parts[0]);
    const std::optional<int> bit = numberOf(parts[1]);
    if (!word || !bit || *bit >= bitsPerWord || *word >= 65536)
        return std::nullopt;
    return *word * bitsPerWord + *bit;
}

} // namespace

int AddressRange::firstWord() const
{
    return width == Width::bit ? first / bitsPerWord : first;
}

int AddressRange::lastWord() const
{
    return width == Width::bit ? last / bitsPerWord : last;
}

int AddressRange::itemCount() const
{
    const int units = last - first + 1;
    return width == Width::doubleWord ? units / 2 : units;
}

AddressRange parseAddressRange(const std::string& written)
{
    const QString text = QString::fromStdString(written);
    const auto colon = text.indexOf(QLatin1Char(':'));
    if (colon < 0)
        throw UsageFailure(text.toStdString(),
                           "an address is written as in R_W:100, M_bit:1.0..1.15 or 2/R_D:10..13");
    AddressRange range;
    QString name = text.left(colon);
    const auto slash = name.indexOf(QLatin1Char('/'));
    if (slash >= 0) {
        const std::optional<int> station = numberOf(name.left(slash));
        if (!station || *station < 1 || *station > 247)
            throw UsageFailure(text.toStdString(), "a station is a number from 1 to 247");
        range.station = *station;
        name = name.mid(slash + 1);
    }
    const RegisterName* entry = registerOf(name);
    if (!entry)
        throw UsageFailure(text.toStdString(),
                           "no register type is called \"" + name.toStdString() + "\"");
    range.registerName = entry->name;
    range.area = entry->area;
    range.width = entry->width;

    const QString addresses = text.mid(colon + 1);
    const auto dots = addresses.indexOf(QLatin1String(".."));
    const std::optional<int> first =
        addressOf(dots < 0 ? addresses : addresses.left(dots), range.width);
    const std::optional<int> last =
        dots < 0 ? first : addressOf(addresses.mid(dots + 2), range.width);
    if (!first || !last)
        throw UsageFailure(text.toStdString(),
                           range.registerName + (range.width == Width::bit
                                                     ? " addresses are WORD.BIT, bits are 0 to 15"
                                                     : " addresses are numbers"));
    range.first = *first;
    range.last = *last;
    if (range.width == Width::doubleWord && dots < 0)
        ++range.last;
    if (range.last < range.first)
        throw UsageFailure(text.toStdString(), "the range ends before it begins");
    if (range.width == Width::doubleWord && (range.last - range.first) % 2 == 0)
        throw UsageFailure(text.toStdString(), "an R_D range names two words a value");
    if (!StationMemory::hasWords(range.area, range.firstWord(),
                                 range.lastWord() - range.firstWord() + 1))
        throw UsageFailure(text.toStdString(), layoutOf(range.area).letter +
                                                   std::string(" ends at word ") +
                                                   std::to_string(layoutOf(range.area).words - 1));
    return range;
}

} // namespace dov417::simulator
