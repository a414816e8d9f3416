#include "panel/trends/trend_arrangement.h"

#include <QString>
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "text/raw_values.h"

namespace dov417 {

namespace {

const char* const spanMember = "span";
const char* const memoryMember = "memory";
const char* const plotsMember = "plots";
const char* const notesMember = "notes";
const char* const valuesMember = "values";
const char* const nameMember = "name";
const char* const addressMember = "address";
constexpr std::size_t maxPlots = 50;

[[noreturn]] void refuseMember(const std::string& path, const std::string& why)
{
    throw UsageFailure(path + ": " + why);
}

double numberIn(const OrderedJson& object, const char* member, double byDefault, double minimum,
                double maximum)
{
    const auto found = object.find(member);
    if (found == object.end())
        return byDefault;
    const double number = found->is_number() ? found->get<double>() : std::nan("");
    if (!(number >= minimum && number <= maximum))
        refuseMember(member, "a number from " + limitText(minimum) + " to " + limitText(maximum) +
                                 " is needed");
    return number;
}

const OrderedJson& listIn(const OrderedJson& object, const char* member, const std::string& path,
                          std::size_t most)
{
    static const OrderedJson nothing = OrderedJson::array();
    const auto found = object.find(member);
    if (found == object.end())
        return nothing;
    if (!found->is_array())
        refuseMember(memberPath(path, member), "a list is needed");
    if (found->size() > most)
        refuseMember(memberPath(path, member), "no more than " + std::to_string(most));
    return *found;
}

std::string textIn(const OrderedJson& object, const char* member, const std::string& path)
{
    const auto found = object.find(member);
    if (found == object.end() || !found->is_string())
        refuseMember(memberPath(path, member), "a text is needed");
    return found->get<std::string>();
}

TrendGroup groupOf(const OrderedJson& plot, const std::string& path)
{
    if (!plot.is_object())
        refuseMember(path, "an object is needed");
    TrendGroup group;
    std::size_t place = 0;
    for (const OrderedJson& each : listIn(plot, valuesMember, path, TrendArrangement::maxValues)) {
        const std::string where = elementPath(memberPath(path, valuesMember), place++);
        if (!each.is_object())
            refuseMember(where, "an object is needed");
        TrendValue value;
        value.name = textIn(each, nameMember, where);
        value.address = textIn(each, addressMember, where);
        if (!group.has(value))
            group.values.push_back(value);
    }
    return group;
}

// A lower rank is the better match; none where it is another value.
constexpr int noMatch = 3;

struct Wanted {
    TrendValue* value;
    const PanelValue* best = nullptr;
    int rank = noMatch;
};

void match(Wanted& wanted, const PanelValue& watched)
{
    const bool isName = wanted.value->name == watched.label.name;
    const bool isAddress = wanted.value->address == watched.label.address;
    const int rank = isName && isAddress ? 0 : isAddress ? 1 : isName ? 2 : noMatch;
    if (rank >= wanted.rank)
        return;
    wanted.rank = rank;
    wanted.best = &watched;
}

} // namespace

// ---- a value --------------------------------------------------------------------------------

bool isDrawnAlike(const TrendValue& a, const TrendValue& b)
{
    return a.name == b.name && a.address == b.address && a.isResolved == b.isResolved &&
           a.at == b.at && a.format == b.format;
}

bool operator==(const TrendValue& a, const TrendValue& b)
{
    return isDrawnAlike(a, b) && a.isWatched == b.isWatched;
}

// No unit is called so.
const char* trendBitsAxis()
{
    return "\n";
}

std::string TrendValue::axis() const
{
    return isBit() ? trendBitsAxis() : format.scaling.unit;
}

TrendValue trendValueOf(const PanelValue& value)
{
    return {value.label.name, value.label.address, true, true, value.address, value.label.format};
}

std::string trendText(const TrendValue& value, std::uint64_t raw)
{
    const Width width = value.at.width;
    return withUnit(rawText(inOrder(raw, width, value.format.order), width, value.format),
                    value.format);
}

std::string trendText(const TrendValue& value, double number)
{
    const int digits = value.isBit() ? 3 : 6; // a bit's mean is a share
    const int decimals = value.format.scaling.decimals;
    const QString text = decimals >= 0 && !value.isBit()
                             ? QString::number(number, 'f', decimals + 1)
                             : QString::number(number, 'g', digits);
    return withUnit(text.toStdString(), value.format);
}

// ---- a plot ---------------------------------------------------------------------------------

bool operator==(const TrendGroup& a, const TrendGroup& b)
{
    return a.values == b.values;
}

std::vector<std::string> TrendGroup::axes() const
{
    std::vector<std::string> axes;
    for (const TrendValue& value : values)
        if (std::find(axes.begin(), axes.end(), value.axis()) == axes.end())
            axes.push_back(value.axis());
    return axes;
}

bool TrendGroup::has(const TrendValue& value) const
{
    return std::any_of(values.begin(), values.end(), [&](const TrendValue& each) {
        return each.name == value.name && each.address == value.address;
    });
}

bool TrendGroup::hasRoomFor(const TrendValue& value) const
{
    const std::vector<std::string> taken = axes();
    return taken.size() < TrendArrangement::maxAxes ||
           std::find(taken.begin(), taken.end(), value.axis()) != taken.end();
}

// ---- all of them ----------------------------------------------------------------------------

std::size_t TrendArrangement::count() const
{
    std::size_t count = 0;
    for (const TrendGroup& plot : plots)
        count += plot.values.size();
    return count;
}

bool TrendArrangement::isWatched() const
{
    return std::all_of(plots.begin(), plots.end(), [](const TrendGroup& plot) {
        return std::all_of(plot.values.begin(), plot.values.end(),
                           [](const TrendValue& value) { return value.isWatched; });
    });
}

std::vector<Address> TrendArrangement::addresses() const
{
    std::vector<Address> addresses;
    for (const TrendGroup& plot : plots)
        for (const TrendValue& value : plot.values)
            if (value.isResolved)
                addresses.push_back(value.at);
    return addresses;
}

std::size_t TrendArrangement::place(const TrendValue& value, std::size_t plot)
{
    for (std::size_t i = std::min(plot, plots.size()); i < plots.size(); ++i) {
        if (plots.at(i).has(value))
            return i;
        if (plots.at(i).hasRoomFor(value)) {
            plots.at(i).values.push_back(value);
            return i;
        }
    }
    plots.push_back({{value}});
    return plots.size() - 1;
}

void TrendArrangement::remove(std::size_t plot, const TrendValue& value)
{
    std::vector<TrendValue>& values = plots.at(plot).values;
    values.erase(std::remove_if(values.begin(), values.end(),
                                [&](const TrendValue& each) {
                                    return each.name == value.name && each.address == value.address;
                                }),
                 values.end());
}

void TrendArrangement::resolve(const PanelTags& tags)
{
    std::vector<Wanted> all;
    std::unordered_multimap<std::string, std::size_t> places; // of all, by name and by address
    for (TrendGroup& plot : plots)
        for (TrendValue& value : plot.values) {
            for (const std::string& text : {value.name, value.address})
                places.emplace(text, all.size());
            all.push_back({&value});
        }
    if (!all.empty())
        for (const PanelValue& each : tags.values)
            if (TrendHistory::takes(each.address))
                for (const std::string* const text : {&each.label.name, &each.label.address}) {
                    const auto [first, last] = places.equal_range(*text);
                    for (auto place = first; place != last; ++place)
                        match(all.at(place->second), each);
                }
    for (const Wanted& wanted : all)
        if (wanted.best)
            *wanted.value = trendValueOf(*wanted.best);
        else
            wanted.value->isWatched = false;
    // One that has found another's name or address may have room no more.
    TrendArrangement placed;
    for (std::size_t i = 0; i < plots.size(); ++i) {
        if (placed.plots.size() <= i)
            placed.plots.resize(i + 1);
        for (const TrendValue& value : plots.at(i).values)
            placed.place(value, i);
    }
    plots = placed.plots;
}

// ---- a project --------------------------------------------------------------------------------

TrendArrangement trendsOf(const OrderedJson& settings)
{
    TrendArrangement arrangement;
    if (!settings.is_object())
        throw UsageFailure("an object is needed");
    arrangement.span = numberIn(settings, spanMember, arrangement.span, TrendArrangement::minSpan,
                                TrendArrangement::maxSpan);
    arrangement.memory = static_cast<std::size_t>(
        numberIn(settings, memoryMember, static_cast<double>(arrangement.memory),
                 static_cast<double>(TrendHistory::minMebibytes),
                 static_cast<double>(TrendHistory::maxMebibytes)));
    std::size_t place = 0;
    for (const OrderedJson& plot : listIn(settings, plotsMember, std::string(), maxPlots))
        arrangement.plots.push_back(groupOf(plot, elementPath(plotsMember, place++)));
    if (arrangement.count() > TrendArrangement::maxValues)
        refuseMember(plotsMember, "no more than " + std::to_string(TrendArrangement::maxValues) +
                                      " values in all of them");
    if (const auto notes = settings.find(notesMember); notes != settings.end())
        arrangement.notes = keptNotesOf(*notes, notesMember);
    for (const auto& [name, member] : settings.items())
        if (name != spanMember && name != memoryMember && name != plotsMember &&
            name != notesMember)
            arrangement.others[name] = member;
    return arrangement;
}

OrderedJson toJson(const TrendArrangement& arrangement)
{
    OrderedJson plots = OrderedJson::array();
    for (const TrendGroup& plot : arrangement.plots) {
        OrderedJson values = OrderedJson::array();
        for (const TrendValue& value : plot.values)
            values.push_back({{nameMember, value.name}, {addressMember, value.address}});
        plots.push_back({{valuesMember, values}});
    }
    OrderedJson settings = {
        {spanMember, arrangement.span}, {memoryMember, arrangement.memory}, {plotsMember, plots}};
    if (!arrangement.notes.empty())
        settings[notesMember] = toJson(arrangement.notes);
    settings.update(arrangement.others);
    return settings;
}

} // namespace dov417
