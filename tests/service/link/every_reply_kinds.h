// Every kind of frame that the driver puts on the line: the work that brings it there, its bytes,
// and what the right reply and giving up do.
#ifndef DOV417_TESTS_EVERY_REPLY_KINDS_H
#define DOV417_TESTS_EVERY_REPLY_KINDS_H

#include <ostream>
#include <string>
#include <vector>

#include "world.h"

struct Range {
    const char* regName;
    int address;
    int length;
    int station = 1;
};

struct RangeBytes {
    Range range;
    std::string bytes; // as intf_setData takes and intf_getData copies them
};

enum {
    noRecipe = 0
}; // else the host block's byte that asks for a transfer

struct LineKind {
    const char* name;
    std::vector<Range> watched;
    std::vector<RangeBytes> writes;
    std::vector<Range> conditions;
    int recipeFlag;
    std::vector<Range> recipe; // at word 3 of the buffer, which holds 0x0001, 0x5678
    std::string earlierReply;  // to the frame that goes before this one, "" where none does
    std::string frame;         // whole
    std::string reply;         // without CRC, "" where none is awaited
    std::string errorText;
    std::vector<RangeBytes> before; // visible while the frame is on the line
    std::vector<RangeBytes> accepted;
    Notices acceptedNotices;
    std::string nextFrame;
    std::vector<RangeBytes> abandoned;
    Notices abandonedNotices;
    std::string frameAfterAbandoning;
};

inline void PrintTo(const LineKind& kind, std::ostream* out)
{
    *out << kind.name;
}

const std::vector<LineKind>& lineKinds();

#endif
