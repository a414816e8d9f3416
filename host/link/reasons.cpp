#include "link/reasons.h"

#include <array>

#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

struct ReasonWords {
    const char* key;
    const char* name;
};

const std::array<ReasonWords, reasonCount> reasonWords = {{{"none", ""},
                                                           {"noByte", "no byte came"},
                                                           {"noFrame", "no frame"},
                                                           {"anotherStation", "another station"},
                                                           {"anotherFunction", "another function"},
                                                           {"anotherRequest", "another request"},
                                                           {"late", "late"},
                                                           {"heldBack", "held back"},
                                                           {"badCrc", "bad CRC"},
                                                           {"cutShort", "cut short"},
                                                           {"exception", "exception"},
                                                           {"broadcast", "broadcast"}}};

} // namespace

const char* nameOf(Reason reason)
{
    return reasonWords.at(static_cast<std::size_t>(reason)).name;
}

const char* keyOf(Reason reason)
{
    return reasonWords.at(static_cast<std::size_t>(reason)).key;
}

Reason reasonOf(StrayKind kind)
{
    switch (kind) {
    case StrayKind::otherStation:
        return Reason::otherStation;
    case StrayKind::otherFunction:
        return Reason::otherFunction;
    case StrayKind::otherRequest:
        return Reason::otherRequest;
    case StrayKind::noise:
        return Reason::noFrame;
    case StrayKind::echo:
        return Reason::none;
    case StrayKind::late:
    case StrayKind::surplus:
        return Reason::late;
    }
    return Reason::none;
}

const char* nameOf(StrayKind kind)
{
    return kind == StrayKind::echo      ? "echo of the request"
           : kind == StrayKind::surplus ? "more than was asked for"
                                        : nameOf(reasonOf(kind));
}

const char* keyOf(StrayKind kind)
{
    return kind == StrayKind::echo      ? "echo"
           : kind == StrayKind::surplus ? "surplus"
                                        : keyOf(reasonOf(kind));
}

void Astray::begin()
{
    noise = 0;
    frame = Reason::none;
}

void Astray::add(const Stray& stray)
{
    if (stray.kind == StrayKind::echo)
        return;
    if (!hasGoodCrc(stray.bytes)) {
        noise += static_cast<int>(stray.bytes.size());
        return;
    }
    frame = reasonOf(stray.kind);
    from = frame == Reason::otherFunction ? functionOf(stray.bytes)
                                          : static_cast<unsigned char>(stray.bytes.at(0));
}

void Astray::addGarbled(const QByteArray& reply, int expectedLength)
{
    from = static_cast<int>(reply.size());
    due = expectedLength;
    frame = from < due ? Reason::cutShort : Reason::badCrc;
}

bool Astray::saysLessThan(const Astray& other) const
{
    return frame == Reason::none && (other.frame != Reason::none || other.noise > noise);
}

} // namespace dov417
