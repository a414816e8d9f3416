// Every write that the host asked for, from the call to its end in the controller's memory.
#ifndef DOV417_TESTS_SOAK_WRITE_LEDGER_H
#define DOV417_TESTS_SOAK_WRITE_LEDGER_H

#include <QByteArray>
#include <QString>
#include <deque>
#include <random>
#include <vector>

#include "intf.h"
#include "simulator/memory.h"

// Ends the program with a sentence: driver, host and controller disagree.
[[noreturn]] void disagree(const QString& sentence);

// A place that is always written as a whole; no two of them overlap.
struct WriteTarget {
    int station; // 0: a broadcast
    const char* regName;
    int address;
    int length;
    dov417::simulator::Area area; // where it lands
    QByteArray inController;
};

struct LedgerCounts {
    std::uint64_t asked = 0;
    std::uint64_t replaced = 0;  // by a newer value while queued
    std::uint64_t confirmed = 0; // the controller's echo came through
    std::uint64_t givenUp = 0;   // executed, but no echo came through
    std::uint64_t unsent = 0;    // given up at the read that goes before a bit of a register
    std::uint64_t reset = 0;
};

class WriteLedger {
public:
    explicit WriteLedger(dov417::simulator::Memory& memory);

    void writeOne(std::mt19937& random);
    // A frame of a write was handed to the controller, and the driver said `result` to its reply.
    void frameSent(const FRAME_PRO& frame);
    void frameEnded(const FRAME_PRO& frame, int result);
    void reset();

    int queued() const
    {
        return static_cast<int>(queue_.size());
    }
    const LedgerCounts& counts() const
    {
        return counts_;
    }
    // Controller and ledger agree, and every write has had exactly one end.
    void requireAgreement() const;

private:
    struct Entry {
        size_t target;
        QByteArray value;
    };

    dov417::simulator::Memory& memory_;
    std::vector<WriteTarget> targets_;
    std::deque<Entry> queue_;
    LedgerCounts counts_;
};

#endif
