// What a bad line and a bad controller do to replies, on purpose and repeatably.
//
// A rule is a kind of fault, how often, and for some kinds how much:
//
//     KIND[:AMOUNT]=N%          each reply with this probability (decimals allowed: 0.5%)
//     KIND[:AMOUNT]=every:N     every Nth reply: the Nth, the 2Nth, ...
//
//   kind       what happens to the reply                              amount (default)
//   silence    is not sent
//   late       is sent later                                          milliseconds (500)
//   flip       has bits turned over                                   bits, 1 to 3 (1)
//   truncate   ends early, at least one byte is sent                  bytes kept (any number)
//   extra      is followed by more bytes                              bytes (1 to 4)
//   noise      is preceded by other bytes                             bytes (1 to 4)
//   station    comes from another station, its CRC is right           station (any other)
//   function   is for another function, its CRC is right              function (any other)
//   exception  is an exception reply in its stead                     code (1, 2, 3, 4 or 6)
//   echo       is preceded by the request, as two-wire adapters do
//   slow       comes in up to 8 pieces with gaps                      milliseconds a gap (5)
//   any        one of the eleven above, by chance
//
// Examples: flip=10%   silence=every:7   late:300=5%   exception:2=every:20
//
// With up to three bits turned over the CRC always tells.
//
// Several rules may hit one reply; they act together, in the order: exception, station, function,
// flip, truncate, extra, noise, echo, slow, late. Silence leaves nothing but the echo. Of two rules
// of one kind that hit the same reply, the first acts. Only replies suffer: the request has been
// executed whatever the master gets to see, and broadcasts have no reply.
//
// The same rules, seed and replies give the same faults on every machine.
#ifndef DOV417_SIMULATOR_FAULTS_H
#define DOV417_SIMULATOR_FAULTS_H

#include <QByteArray>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace dov417::simulator {

// In the order in which they act.
enum class FaultKind {
    exception,
    station,
    function,
    flip,
    truncate,
    extra,
    noise,
    echo,
    slow,
    late,
    silence,
    any
};
constexpr int faultKindCount = 11; // without `any`, which becomes one of the others

struct FaultRule {
    FaultKind kind = FaultKind::silence;
    double probability = 0; // 0 to 1; taken when `every` is 0
    int every = 0;          // N: every Nth reply
    int amount = -1;        // -1: the kind's default
};

// Throws a UsageFailure when the text is no rule.
FaultRule parseFaultRule(const std::string& text);
std::string faultRuleText(const FaultRule& rule);
std::string faultName(FaultKind kind);

// What goes on the line in place of a reply: pieces, each after a silence of its own.
struct Piece {
    int delayMs = 0; // before the first byte, on top of the response time
    QByteArray bytes;
};
struct Transmission {
    QByteArray echo;               // what the master hears of its own request, at once
    std::vector<Piece> pieces;     // none: the reply is not sent
    std::vector<FaultKind> faults; // those that show; none for an untouched reply

    QByteArray bytes() const; // of all pieces
};

class Faults {
public:
    explicit Faults(const std::vector<FaultRule>& rules = {}, std::uint32_t seed = 1);

    // From the next reply on; what was counted stays.
    void setRules(const std::vector<FaultRule>& rules);

    // An empty reply (a broadcast's) is no reply: nothing happens to it, nothing is counted.
    Transmission apply(const QByteArray& request, const QByteArray& reply);

    std::uint64_t replies() const; // handed in
    std::uint64_t faulty() const;  // of these, hit by at least one fault
    std::uint64_t count(FaultKind kind) const;
    std::string report() const; // "flip 12, silence 3"; "none"

private:
    struct Source { // a rule and its own chance, so that rules do not disturb each other
        FaultRule rule;
        std::mt19937 chance;
    };
    std::vector<Source> sources_;
    std::uint32_t seed_;
    std::uint32_t sourcesMade_ = 0; // each has other chances than all before it
    std::array<std::uint64_t, faultKindCount> counts_{};
    std::uint64_t replies_ = 0;
    std::uint64_t faulty_ = 0;
};

} // namespace dov417::simulator

#endif
