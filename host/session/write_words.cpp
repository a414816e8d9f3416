#include "session/write_words.h"

#include <algorithm>
#include <cmath>

#include "text/address_values.h"

namespace dov417 {

namespace {

std::string joined(const Item& item, const std::vector<unsigned char>& bytes)
{
    std::string text;
    for (const std::string& value : valueTexts(item.address, item.format, bytes.data()))
        text += (text.empty() ? "" : " ") + value;
    return withUnit(text, item.format);
}

// Of a word or a double word, scaled.
std::string wholeNumbers(Width width, const Format& format)
{
    const int bits = 8 * byteCount(width, 1);
    const bool isSigned = format.notation == Notation::signedNumber;
    const double highest = std::exp2(isSigned ? bits - 1 : bits) - 1;
    const auto scaled = [&format](double raw) {
        return raw * format.scaling.scale + format.scaling.offset;
    };
    const auto [least, most] = std::minmax({scaled(isSigned ? -highest - 1 : 0), scaled(highest)});
    return limitText(least) + " to " + withUnit(limitText(most), format);
}

} // namespace

std::string notationOfLimits(const Item& item)
{
    const Format& typed = item.format;
    const Format& own = item.ofLimits;
    const bool areAlike = typed.notation == own.notation &&
                          typed.scaling.scale == own.scaling.scale &&
                          typed.scaling.offset == own.scaling.offset;
    return areAlike ? std::string() : notationNames().at(static_cast<std::size_t>(own.notation));
}

std::string rangeText(const Item& item)
{
    const std::string notation = notationOfLimits(item);
    const auto number = [&](double limit) {
        return withUnit(limitText(limit), item.ofLimits) +
               (notation.empty() ? "" : ", as " + notation);
    };
    const Limits& limits = item.limits;
    if (limits.min && limits.max)
        return limitText(*limits.min) + " to " + number(*limits.max);
    if (limits.min || limits.max)
        return limits.min ? "at least " + number(*limits.min) : "at most " + number(*limits.max);
    const Width width = item.address.width;
    switch (item.format.notation) {
    case Notation::boolean:
        return "true or false";
    case Notation::text:
        return "a text of at most " + std::to_string(byteCount(item.address)) + " characters";
    case Notation::unsignedNumber:
    case Notation::signedNumber:
        return width == Width::bit ? "0 or 1" : wholeNumbers(width, item.format);
    default:
        return std::string();
    }
}

WriteTask writeTask(const Item& item, const std::vector<std::string>& values)
{
    WriteTask task;
    task.item = item;
    try {
        task.data = valueBytes(item.address, item.format, values);
        requireWithinLimits(item, task.data);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(item.name + ": " + failure.what());
    }
    return task;
}

std::string writeReport(const WriteTask& task, const std::string& interruption)
{
    std::string head = task.item.name + " = " + joined(task.item, task.data) + ": ";
    switch (task.result) {
    case WriteResult::confirmed:
        return head + "written and read back" +
               (task.before.empty() ? "" : ", was " + joined(task.item, task.before));
    case WriteResult::sent:
        return head + "sent to all stations; nobody confirms a broadcast";
    case WriteResult::refused:
        return head + "given up, NOT confirmed: " + task.reason;
    case WriteResult::unread:
        return head + "taken, but reading it back failed: " + task.reason;
    case WriteResult::different:
        return head + "taken, but it reads back as " + joined(task.item, task.after);
    case WriteResult::waiting:
        return head + "NOT confirmed: " + interruption;
    }
    return head;
}

} // namespace dov417
