#include "driver/registers.h"

#include "line/frame_bytes.h"

#include <QStringList>

namespace dov417 {

namespace {

// Bits of a word register, for every type of this controller.

std::optional<RegisterType> described(const Library& library, const QString& name)
{
    QStringList texts;
    library.intf_getRegDiscription(name, &texts);
    if (texts.size() < 5)
        return std::nullopt;
    RegisterType type;
    type.name = name.toStdString();
    type.format = texts.at(0).toStdString();
    type.lowest = texts.at(1).toStdString();
    type.highest = texts.at(2).toStdString();
    const std::string width = texts.at(3).toStdString();
    type.width = width == "0" ? Width::bit : width == "2" ? Width::doubleWord : Width::word;
    const std::string access = texts.at(4).toStdString();
    type.access = access == "0" ? "read" : access == "2" ? "write" : "read and write";
    return type;
}

} // namespace

std::vector<RegisterType> registerTypes(const Library& library)
{
    QStringList names;
    library.intf_getRegListByType(0, &names);
    library.intf_getRegListByType(1, &names);
    std::vector<RegisterType> types;
    for (const QString& name : names)
        if (const auto type = described(library, name))
            types.push_back(*type);
    return types;
}

std::optional<RegisterType> registerType(const Library& library, const std::string& name)
{
    return described(library, QString::fromStdString(name));
}

std::string addressText(const Library& library, const std::string& regName, int address)
{
    return addressTexts(library, regName, address, 1, 1).front();
}

std::vector<std::string> addressTexts(const Library& library, const std::string& regName,
                                      int address, int count, int step)
{
    // A value above the highest address comes back clipped.
    QVector<QString> texts;
    QVector<int> values;
    library.intf_multiCopy(QString::fromStdString(regName), address, count, step, texts, values);
    std::vector<std::string> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const int wanted = address + i * step;
        const bool isThere = i < texts.size() && i < values.size() && values.at(i) == wanted;
        all.push_back(isThere ? texts.at(i).toStdString() : std::to_string(wanted));
    }
    return all;
}

std::string areaOf(const std::string& regName)
{
    return regName.substr(0, regName.find('_'));
}

int unitsOf(Width width)
{
    return width == Width::quadWord ? 4 : width == Width::doubleWord ? 2 : 1;
}

Words wordsOf(Width width, int address, int length)
{
    if (width != Width::bit)
        return {address, length};
    const int first = address / bitsPerWord;
    const int last = (address + length - 1) / bitsPerWord;
    return {first, last - first + 1};
}

} // namespace dov417
