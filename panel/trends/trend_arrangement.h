// Which values are in which plot, and what a project keeps of that.
#ifndef DOV417_PANEL_TREND_ARRANGEMENT_H
#define DOV417_PANEL_TREND_ARRANGEMENT_H

#include <cstddef>
#include <string>
#include <vector>

#include "panel/desk/panel_tags.h"
#include "panel/trends/trend_history.h"
#include "panel/trends/trend_notes.h"
#include "text/placed_json.h"

namespace dov417 {

// A value by its name and its address as text; what it is, once it was watched.
struct TrendValue {
    std::string name;
    std::string address;
    bool isResolved = false;
    bool isWatched = false;
    Address at;
    Format format;

    bool isBit() const
    {
        return at.width == Width::bit;
    }
    // "°C"; all bits have one of their own.
    std::string axis() const;
};
bool operator==(const TrendValue& a, const TrendValue& b);
// To a plot it is all one whether they are watched.
bool isDrawnAlike(const TrendValue& a, const TrendValue& b);
const char* trendBitsAxis();
TrendValue trendValueOf(const PanelValue& value);
// What the value's bits are, for people, with its unit.
std::string trendText(const TrendValue& value, std::uint64_t raw);
// A number that was reckoned of its values, in its unit and with its decimals.
std::string trendText(const TrendValue& value, double number);

struct TrendGroup {
    std::vector<TrendValue> values;

    std::vector<std::string> axes() const; // each once, in the order of the values
    bool has(const TrendValue& value) const;
    bool hasRoomFor(const TrendValue& value) const;
};
bool operator==(const TrendGroup& a, const TrendGroup& b);

struct TrendArrangement {
    static constexpr std::size_t maxAxes = 2;     // of a plot: left and right
    static constexpr std::size_t maxValues = 300; // of all plots
    static constexpr double defaultSpan = 30;     // seconds
    static constexpr double minSpan = 0.01;
    static constexpr double maxSpan = 30.0 * 24 * 3600;

    double span = defaultSpan;
    std::size_t memory = TrendHistory::defaultMebibytes;
    std::vector<TrendGroup> plots;
    std::vector<KeptNote> notes;                // a person's
    OrderedJson others = OrderedJson::object(); // a newer program's, kept as they are

    std::size_t count() const; // of values
    bool isWatched() const;    // all of them are
    std::vector<Address> addresses() const;
    // Into this plot, or where it has no axis left for the unit into the next that has, or into a
    // new one; where it is already it stays. Returns the plot.
    std::size_t place(const TrendValue& value, std::size_t plot);
    void remove(std::size_t plot, const TrendValue& value);
    // Finds the values among what is watched: by name and address, else by address, else by name.
    void resolve(const PanelTags& tags);
};

// Throws a UsageFailure that begins with the member.
TrendArrangement trendsOf(const OrderedJson& settings);
OrderedJson toJson(const TrendArrangement& arrangement);

} // namespace dov417

#endif
