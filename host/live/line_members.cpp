#include "live/line_members.h"

#include <charconv>
#include <stdexcept>

namespace dov417 {

namespace {

// More than a request can span says nothing new.
constexpr double maxMergeGap = 65535;
constexpr double maxRetries = 1000;
constexpr double minHorizonSeconds = 0.1;
constexpr double maxHorizonSeconds = 3600;
// A 32-bit value is not cut in two.
constexpr double minMaxRegisters = 2;

std::string textOfNumber(double number)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

std::string textOf(const std::string& text)
{
    return text;
}

std::string textOf(bool)
{
    return "true";
}

std::string textOf(int number)
{
    return std::to_string(number);
}

std::string textOf(double number)
{
    return textOfNumber(number);
}

std::string textOf(const std::optional<int>& number)
{
    return number ? std::to_string(*number) : std::string();
}

} // namespace

const std::vector<LineMember>& lineMembers()
{
    static const std::vector<LineMember> members = {
        {"port", &LineSetup::port, 0, 0},
        {"simulated", &LineSetup::simulated, 0, 0},
        {"line", &LineSetup::line, 0, 0},
        {"timeout", &LineSetup::timeoutMs, 1, maxMs},
        {"timeout-min", &LineSetup::timeoutMinMs, 1, maxMs},
        {"timeout-max", &LineSetup::timeoutMaxMs, 1, maxMs},
        {"reply-gap", &LineSetup::replyGapMs, 1, maxMs},
        {"horizon", &LineSetup::horizonSeconds, minHorizonSeconds, maxHorizonSeconds},
        {"no-function-8", &LineSetup::mayMark, 0, 0},
        {"retries", &LineSetup::retries, 1, maxRetries},
        {"probe", &LineSetup::maxProbeMs, 1, maxMs},
        {"turnaround", &LineSetup::turnaroundMs, 0, maxMs},
        {"gap", &LineSetup::gap, 0, maxMergeGap},
        {"max-registers", &LineSetup::maxRegisters, minMaxRegisters, noMaximum},
    };
    return members;
}

const LineMember& lineMember(const std::string& name)
{
    for (const LineMember& member : lineMembers())
        if (name == member.name)
            return member;
    throw std::out_of_range(name);
}

bool isDefault(const LineMember& member, const LineSetup& setup)
{
    static const LineSetup defaults;
    return std::visit([&setup](auto field) { return setup.*field == defaults.*field; },
                      member.field);
}

void copyMember(const LineMember& member, const LineSetup& from, LineSetup& to)
{
    std::visit([&from, &to](auto field) { to.*field = from.*field; }, member.field);
}

std::string memberText(const LineMember& member, const LineSetup& setup)
{
    return std::visit([&setup](auto field) { return textOf(setup.*field); }, member.field);
}

} // namespace dov417
