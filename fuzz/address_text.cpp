// Address text and the editor's checks: what is accepted lies in its range and converts back.
#include "protocol/address_text.h"
#include "host.h"

namespace {

QString plainText(const TypeFacts& facts, int address)
{
    return facts.bits ? QString::fromLatin1("%1.%2").arg(address / 16).arg(address % 16)
                      : QString::number(address);
}

struct Asked {
    QString regName;
    QString text;
    int dataType;
    int length;
    int accessMode;
    int held; // what the address argument holds on entry
};

void requireUnchanged(int code, int address, const Asked& asked)
{
    if (code == 1 || code == 3 || code == 5 || code == 6) {
        require(address == asked.held, "a refusal by kind or name leaves the address alone");
    }
}

void checkUnknownName(const Asked& asked)
{
    int address = asked.held;
    const int code = intf_checkAddr(asked.regName, asked.text, &address, asked.dataType,
                                    asked.length, asked.accessMode);
    const bool inside = asked.held >= 0 && static_cast<long long>(asked.held) + asked.length <= 1;
    require(code == (inside ? 3 : 2), "an unknown name is judged by the value held");
    require(address == asked.held, "an unknown name converts nothing");
}

void checkKnownName(const Asked& asked, const TypeFacts& facts)
{
    int address = asked.held;
    const int code = intf_checkAddr(asked.regName, asked.text, &address, asked.dataType,
                                    asked.length, asked.accessMode);
    require(code >= 0 && code <= 6 && code != 3 && code != 6, "a code of a known, writable type");
    requireUnchanged(code, address, asked);
    require((code == 1) == ((asked.dataType == -1) != facts.bits), "the kind decides first");
    int plain = asked.held;
    const int plainCode = intf_checkAddrValidity(asked.regName, asked.text, &plain, asked.length,
                                                 asked.dataType == -1 ? 0 : 1);
    require(code == 5 || (plainCode == code && plain == address), "both checks agree");
    if (code == 2) {
        require(address < 0 || static_cast<long long>(address) + asked.length > facts.highest + 1,
                "what is refused as out of range is");
    }
    if (code != 0) {
        return;
    }
    require(address >= 0 && static_cast<long long>(address) + asked.length <= facts.highest + 1,
            "what is accepted lies within its range");
    int again = -1;
    require(intf_checkAddr(asked.regName, plainText(facts, address), &again, asked.dataType,
                           asked.length, asked.accessMode) == 0 &&
                again == address,
            "what is accepted converts back to the same address");
    if (facts.bits) {
        require(addr_int2str(address, asked.regName) == plainText(facts, address),
                "a bit address is written word.bit");
    }
}

void checkSeries(Script& script, const Asked& asked)
{
    const int start = script.address();
    const int count = script.length(60);
    const int steps[] = {-2, -1, 0, 1, 2, 16, 1000, -1000};
    const int step = script.byte() < 240 ? steps[script.choice(8)] : script.number();
    QVector<QString> texts;
    QVector<int> addresses;
    const int result = intf_multiCopy(asked.regName, start, count, step, texts, addresses);
    const int type = typeOf(asked.regName);
    if (type < 0) {
        require(result == 0 && texts.isEmpty() && addresses.isEmpty(),
                "an unknown series is empty");
        return;
    }
    const TypeFacts& facts = factsOf(type);
    const long long resolved = step == -2 ? 2 : step < 1 ? 1 : step;
    bool clipped = false;
    require(addresses.size() == (count > 0 ? count : 0), "a series has its count");
    require(texts.size() == addresses.size(), "texts and addresses come in pairs");
    for (int i = 0; i < addresses.size(); ++i) {
        const long long exact = start + i * resolved;
        clipped = clipped || exact > facts.highest;
        require(addresses.at(i) == (exact > facts.highest ? facts.highest : exact),
                "a series goes up by its step and ends at the highest address");
        if (exact >= 0) {
            require(texts.at(i) == plainText(facts, addresses.at(i)), "a text names its address");
        }
    }
    require(result == (clipped ? 2 : 1), "a clipped series says so");
}

void checkDescriptions(const Asked& asked)
{
    QStringList description;
    require(intf_getRegDiscription(asked.regName, &description) == 0, "describing gives 0");
    require(description.size() == (typeOf(asked.regName) < 0 ? 0 : 5), "five texts or none");
    QStringList list;
    const int known = intf_getRegListByType(asked.dataType, &list);
    require(known == (asked.dataType == 0 || asked.dataType == 1 ? 1 : 0), "kinds 0 and 1");
    require(list.size() == (asked.dataType == 0 ? 4 : 7), "four bit types, seven word types");
}

void checkConversions(Script& script, const Asked& asked)
{
    const char* const formats[] = {"DDD", "DDDD", "OO", "HHH", "DDD.DD", "", "D", "XYZ"};
    const int held = 4711;
    int value = held;
    const QString format = QString::fromLatin1(formats[script.choice(8)]);
    const int converted = a2i(asked.text, value, format, asked.regName);
    require(converted == 1 || converted == -1, "converted or not");
    if (converted == 1 && (format == QLatin1String("HHH") || format == QLatin1String("OO")) &&
        value >= 0) {
        int again = -1;
        const int radix = format == QLatin1String("OO") ? 8 : 16;
        require(a2i(QString::number(value, radix), again, format, asked.regName) == 1 &&
                    again == value,
                "a number of any radix converts back");
    }
    const int bits = addr_str2int(asked.text, asked.regName);
    require(bits == 0 || asked.regName.contains(QLatin1String("_bit")), "only bits have a point");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    static HostMemory host;
    Script script(data, size);
    freshDriver(host, "7#0#0#3#10");
    Asked asked;
    asked.regName = script.regName();
    const int dataTypes[] = {-1, 0, 1, 2, 3, 5, 6, 9};
    asked.dataType = dataTypes[script.choice(8)];
    asked.length = script.length(40);
    asked.accessMode = script.choice(4);
    asked.held = script.byte() < 200 ? script.choice(4) - 1 : script.number();
    Script again = script;
    const bool utf16 = script.choice(8) == 0;
    const QByteArray rest = script.rest();
    asked.text = QString::fromLatin1(rest);
    if (utf16) {
        asked.text.clear();
        for (int i = 0; i + 1 < rest.size(); i += 2) {
            asked.text.append(
                QChar(static_cast<uchar>(rest.at(i)), static_cast<uchar>(rest.at(i + 1))));
        }
    }
    const int type = typeOf(asked.regName);
    if (type < 0) {
        checkUnknownName(asked);
    } else {
        checkKnownName(asked, factsOf(type));
    }
    checkDescriptions(asked);
    checkConversions(again, asked);
    checkSeries(again, asked);
    return 0;
}
