// What the pending write list must hold, told once more: every write is followed from the host's
// call to its end.
#ifndef DOV417_FUZZ_QUEUE_MODEL_H
#define DOV417_FUZZ_QUEUE_MODEL_H

#include <QByteArray>
#include <QString>
#include <deque>

#include "host.h"

struct QueuedWrite {
    int kind;
    int station;
    QString regName;
    int address;
    int length;
    QByteArray data;
};

class QueueModel {
public:
    // A host's write that the driver takes. Pieces that the cap drops go to `dropped`.
    void write(const QueuedWrite& whole, std::deque<QueuedWrite>& dropped);
    // The head of the list leaves, answered or given up.
    void headLeaves();
    void reset();

    const std::deque<QueuedWrite>& queue() const
    {
        return queue_;
    }
    // The driver's list is this one, and every write that was taken has had one end.
    void requireAgreement() const;

private:
    void queuePiece(const QueuedWrite& piece, std::deque<QueuedWrite>& dropped);

    std::deque<QueuedWrite> queue_;
    long long taken_ = 0;
    long long left_ = 0;
    long long replaced_ = 0;
    long long dropped_ = 0;
    long long reset_ = 0;
};

bool sameRequest(const QueuedWrite& write, const VARIABLE& request);

#endif
