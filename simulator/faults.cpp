#include "simulator/faults.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "simulator/controller.h"

namespace dov417::simulator {

namespace {

constexpr int defaultLateMs = 500;
constexpr int defaultGapMs = 5;
constexpr unsigned maxPieces = 8;
constexpr unsigned maxStrayBytes = 4;
constexpr int functionCodes[] = {1, 3, 5, 6, 15, 16};
constexpr int exceptionCodes[] = {1, 2, 3, 4, 6};

using Chance = std::mt19937;

// The standard library's distributions differ from one library to the next; this does not.
int below(Chance& chance, unsigned limit)
{
    return static_cast<int>(chance() % limit);
}

std::size_t indexOf(FaultKind kind)
{
    return static_cast<std::size_t>(kind);
}

// Rebuilds the CRC: the line is good, the content is not.
QByteArray withByte(const QByteArray& reply, int index, int value)
{
    QByteArray changed = reply.left(reply.size() - 2);
    changed[index] = static_cast<char>(value);
    return withCrc(changed);
}

QByteArray exceptionInstead(const QByteArray& reply, int amount, Chance& chance)
{
    const int code =
        amount >= 0 ? amount : exceptionCodes[below(chance, std::size(exceptionCodes))];
    QByteArray exception = reply.left(2);
    exception[1] = static_cast<char>(static_cast<unsigned char>(reply.at(1)) | 0x80);
    exception.append(static_cast<char>(code));
    return withCrc(exception);
}

QByteArray otherStation(const QByteArray& reply, int amount, Chance& chance)
{
    const int own = static_cast<unsigned char>(reply.at(0));
    if (amount >= 0 && amount != own)
        return withByte(reply, 0, amount);
    const int other = 1 + below(chance, maxStation - 1); // one fewer: the own one is left out
    return withByte(reply, 0, other >= own ? other + 1 : other);
}

QByteArray otherFunction(const QByteArray& reply, int amount, Chance& chance)
{
    const int own = static_cast<unsigned char>(reply.at(1)) & 0x7F;
    int other = amount;
    while (other < 0 || other == own)
        other = functionCodes[below(chance, std::size(functionCodes))];
    return withByte(reply, 1, other);
}

QByteArray flipped(const QByteArray& reply, int amount, Chance& chance)
{
    const std::size_t bits = amount >= 0 ? static_cast<std::size_t>(amount) : 1;
    std::set<int> chosen;
    while (chosen.size() < bits)
        chosen.insert(below(chance, static_cast<unsigned>(reply.size()) * 8));
    QByteArray changed = reply;
    for (int bit : chosen)
        changed[bit / 8] = static_cast<char>(changed.at(bit / 8) ^ (1 << (bit % 8)));
    return changed;
}

QByteArray truncated(const QByteArray& reply, int amount, Chance& chance)
{
    const int maxKept = static_cast<int>(reply.size()) - 1;
    return reply.left(amount >= 0 ? std::min(amount, maxKept)
                                  : 1 + below(chance, static_cast<unsigned>(maxKept)));
}

QByteArray strayBytes(int amount, Chance& chance)
{
    const int count = amount >= 0 ? amount : 1 + below(chance, maxStrayBytes);
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<char>(below(chance, 256)));
    return bytes;
}

std::vector<Piece> inPieces(const QByteArray& bytes, int gapMs, Chance& chance)
{
    const unsigned size = static_cast<unsigned>(bytes.size());
    std::set<int> cuts;
    while (cuts.size() + 1 < std::min(maxPieces, size))
        cuts.insert(1 + below(chance, size - 1));
    std::vector<Piece> pieces;
    int from = 0;
    for (int cut : cuts) {
        pieces.push_back({from == 0 ? 0 : gapMs, bytes.mid(from, cut - from)});
        from = cut;
    }
    pieces.push_back({from == 0 ? 0 : gapMs, bytes.mid(from)});
    return pieces;
}

bool hits(const FaultRule& rule, std::uint64_t reply, Chance& chance)
{
    if (rule.every > 0)
        return reply % static_cast<std::uint64_t>(rule.every) == 0;
    return static_cast<double>(chance()) < rule.probability * 4294967296.0;
}

} // namespace

QByteArray Transmission::bytes() const
{
    QByteArray all;
    for (const Piece& piece : pieces)
        all += piece.bytes;
    return all;
}

Faults::Faults(const std::vector<FaultRule>& rules, std::uint32_t seed) : seed_(seed)
{
    setRules(rules);
}

void Faults::setRules(const std::vector<FaultRule>& rules)
{
    sources_.clear();
    for (const FaultRule& rule : rules)
        sources_.push_back({rule, Chance(seed_ + 0x9E3779B9U * sourcesMade_++)});
}

Transmission Faults::apply(const QByteArray& request, const QByteArray& reply)
{
    Transmission result;
    if (reply.isEmpty())
        return result;
    ++replies_;

    std::array<Source*, faultKindCount> hit{};
    for (Source& source : sources_) {
        if (!hits(source.rule, replies_, source.chance))
            continue;
        const std::size_t kind =
            source.rule.kind == FaultKind::any
                ? static_cast<std::size_t>(below(source.chance, faultKindCount))
                : indexOf(source.rule.kind);
        if (!hit[kind])
            hit[kind] = &source;
    }
    // Nothing shows of what a silent controller might have sent; an adapter's echo does.
    if (hit[indexOf(FaultKind::silence)]) {
        for (std::size_t kind = 0; kind < hit.size(); ++kind) {
            if (kind != indexOf(FaultKind::silence) && kind != indexOf(FaultKind::echo))
                hit[kind] = nullptr;
        }
    }

    QByteArray bytes = reply;
    result.pieces = {{0, bytes}};
    for (std::size_t index = 0; index < hit.size(); ++index) {
        if (!hit[index])
            continue;
        const int amount = hit[index]->rule.amount;
        Chance& chance = hit[index]->chance;
        const auto kind = static_cast<FaultKind>(index);
        switch (kind) {
        case FaultKind::exception:
            bytes = exceptionInstead(bytes, amount, chance);
            break;
        case FaultKind::station:
            bytes = otherStation(bytes, amount, chance);
            break;
        case FaultKind::function:
            bytes = otherFunction(bytes, amount, chance);
            break;
        case FaultKind::flip:
            bytes = flipped(bytes, amount, chance);
            break;
        case FaultKind::truncate:
            bytes = truncated(bytes, amount, chance);
            break;
        case FaultKind::extra:
            bytes += strayBytes(amount, chance);
            break;
        case FaultKind::noise:
            bytes = strayBytes(amount, chance) + bytes;
            break;
        case FaultKind::echo:
            result.echo = request;
            break;
        case FaultKind::slow:
        case FaultKind::late:
        case FaultKind::silence:
        case FaultKind::any:
            break; // below, once the bytes are what they are
        }
        result.faults.push_back(kind);
        ++counts_[index];
    }
    if (!result.faults.empty())
        ++faulty_;

    if (hit[indexOf(FaultKind::silence)]) {
        result.pieces.clear();
        return result;
    }
    result.pieces = {{0, bytes}};
    if (Source* slow = hit[indexOf(FaultKind::slow)])
        result.pieces = inPieces(bytes, slow->rule.amount >= 0 ? slow->rule.amount : defaultGapMs,
                                 slow->chance);
    if (Source* late = hit[indexOf(FaultKind::late)])
        result.pieces.front().delayMs = late->rule.amount >= 0 ? late->rule.amount : defaultLateMs;
    return result;
}

std::uint64_t Faults::replies() const
{
    return replies_;
}

std::uint64_t Faults::faulty() const
{
    return faulty_;
}

std::uint64_t Faults::count(FaultKind kind) const
{
    return kind == FaultKind::any ? faulty_ : counts_[indexOf(kind)];
}

std::string Faults::report() const
{
    std::string text;
    for (std::size_t index = 0; index < counts_.size(); ++index) {
        if (counts_[index] != 0)
            text += (text.empty() ? "" : ", ") + faultName(static_cast<FaultKind>(index)) + " " +
                    std::to_string(counts_[index]);
    }
    return text.empty() ? "none" : text;
}

} // namespace dov417::simulator
