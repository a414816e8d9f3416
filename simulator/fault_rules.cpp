// The written form of fault rules.
#include "simulator/faults.h"

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

const KindEntry* entryOf(const QString& name)
{
    for (const KindEntry& entry : kinds) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

std::optional<FaultRule> refuse(QString* error, const QString& text, const QString& reason)
{
    if (error)
        *error = QStringLiteral("\"%1\": %2").arg(text, reason);
    return std::nullopt;
}

QString kindNames()
{
    QString names;
    for (const KindEntry& entry : kinds)
        names += (names.isEmpty() ? QString() : QStringLiteral(", ")) + QLatin1String(entry.name);
    return names;
}

} // namespace

std::optional<FaultRule> parseFaultRule(const QString& text, QString* error)
{
    const auto equals = text.indexOf(QLatin1Char('='));
    if (equals < 0)
        return refuse(error, text,
                      QStringLiteral("a fault is written as in flip=10% or silence=every:7"));
    const QString kindText = text.left(equals).trimmed();
    const QString howOften = text.mid(equals + 1).trimmed();

    const auto colon = kindText.indexOf(QLatin1Char(':'));
    const KindEntry* entry = entryOf(colon < 0 ? kindText : kindText.left(colon));
    if (!entry)
        return refuse(error, text,
                      QStringLiteral("no such kind of fault; there are ") + kindNames());
    FaultRule rule;
    rule.kind = entry->kind;
    bool isNumber = false;
    if (colon >= 0) {
        if (entry->lowestAmount < 0)
            return refuse(error, text,
                          QStringLiteral("%1 takes no amount").arg(QLatin1String(entry->name)));
        rule.amount = kindText.mid(colon + 1).toInt(&isNumber);
        if (!isNumber || rule.amount < entry->lowestAmount || rule.amount > entry->highestAmount)
            return refuse(error, text,
                          QStringLiteral("the amount of %1 must be %2 to %3")
                              .arg(QLatin1String(entry->name))
                              .arg(entry->lowestAmount)
                              .arg(entry->highestAmount));
    }

    const QString every = QStringLiteral("every:");
    if (howOften.startsWith(every)) {
        rule.every = howOften.mid(every.size()).toInt(&isNumber);
        if (!isNumber || rule.every < 1)
            return refuse(error, text, QStringLiteral("every: must name a number from 1 on"));
        return rule;
    }
    if (howOften.endsWith(QLatin1Char('%'))) {
        const double percent = howOften.left(howOften.size() - 1).toDouble(&isNumber);
        if (isNumber && percent >= 0 && percent <= 100) {
            rule.probability = percent / 100;
            return rule;
        }
    }
    return refuse(error, text, QStringLiteral("how often is written as 0% to 100%, or as every:N"));
}

QString faultName(FaultKind kind)
{
    for (const KindEntry& entry : kinds) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return QString();
}

QString faultRuleText(const FaultRule& rule)
{
    QString text = faultName(rule.kind);
    if (rule.amount >= 0)
        text += QStringLiteral(":%1").arg(rule.amount);
    if (rule.every > 0)
        return text + QStringLiteral("=every:%1").arg(rule.every);
    return text + QStringLiteral("=%1%").arg(rule.probability * 100);
}

} // namespace dov417::simulator
