// The written form of fault rules.
#include "simulator/faults.h"

#include <QString>

#include "line/failure.h"

namespace dov417::simulator {

namespace {

struct KindEntry {
    FaultKind kind;
    const char* name;
    int lowestAmount; // -1: the kind takes none
    int highestAmount;
};

constexpr KindEntry kinds[] = {
    {FaultKind::exception, "exception", 1, 255}, {FaultKind::station, "station", 0, 255},
    {FaultKind::function, "function", 1, 127},   {FaultKind::flip, "flip", 1, 3},
    {FaultKind::truncate, "truncate", 1, 260},   {FaultKind::extra, "extra", 1, 1024},
    {FaultKind::noise, "noise", 1, 1024},        {FaultKind::echo, "echo", -1, -1},
    {FaultKind::slow, "slow", 1, 10000},         {FaultKind::late, "late", 1, 600000},
    {FaultKind::silence, "silence", -1, -1},     {FaultKind::any, "any", -1, -1},
};

std::string kindNames()
{
    std::string names;
    for (const KindEntry& entry : kinds)
        names += (names.empty() ? "" : ", ") + std::string(entry.name);
    return names;
}

const KindEntry* entryOf(const QString& name)
{
    for (const KindEntry& entry : kinds) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

} // namespace

FaultRule parseFaultRule(const std::string& written)
{
    const QString text = QString::fromStdString(written);
    const auto equals = text.indexOf(QLatin1Char('='));
    if (equals < 0)
        throw UsageFailure(text.toStdString(),
                           "a fault is written as in flip=10% or silence=every:7");
    const QString kindText = text.left(equals).trimmed();
    const QString howOften = text.mid(equals + 1).trimmed();

    const auto colon = kindText.indexOf(QLatin1Char(':'));
    const KindEntry* entry = entryOf(colon < 0 ? kindText : kindText.left(colon));
    if (!entry)
        throw UsageFailure(text.toStdString(), "no such kind of fault; there are " + kindNames());
    FaultRule rule;
    rule.kind = entry->kind;
    bool isNumber = false;
    if (colon >= 0) {
        if (entry->lowestAmount < 0)
            throw UsageFailure(text.toStdString(), std::string(entry->name) + " takes no amount");
        rule.amount = kindText.mid(colon + 1).toInt(&isNumber);
        if (!isNumber || rule.amount < entry->lowestAmount || rule.amount > entry->highestAmount)
            throw UsageFailure(text.toStdString(),
                               "the amount of " + std::string(entry->name) + " must be " +
                                   std::to_string(entry->lowestAmount) + " to " +
                                   std::to_string(entry->highestAmount));
    }

    const QLatin1String every("every:");
    if (howOften.startsWith(every)) {
        rule.every = howOften.mid(every.size()).toInt(&isNumber);
        if (!isNumber || rule.every < 1)
            throw UsageFailure(text.toStdString(), "every: must name a number from 1 on");
        return rule;
    }
    if (howOften.endsWith(QLatin1Char('%'))) {
        const double percent = howOften.left(howOften.size() - 1).toDouble(&isNumber);
        if (isNumber && percent >= 0 && percent <= 100) {
            rule.probability = percent / 100;
            return rule;
        }
    }
    throw UsageFailure(text.toStdString(), "how often is written as 0% to 100%, or as every:N");
}

std::string faultName(FaultKind kind)
{
    for (const KindEntry& entry : kinds) {
        if (entry.kind == kind)
            return entry.name;
    }
    return std::string();
}

std::string faultRuleText(const FaultRule& rule)
{
    std::string text = faultName(rule.kind);
    if (rule.amount >= 0)
        text += ":" + std::to_string(rule.amount);
    if (rule.every > 0)
        return text + "=every:" + std::to_string(rule.every);
    return text + "=" + QString::number(rule.probability * 100).toStdString() + "%";
}

} // namespace dov417::simulator
