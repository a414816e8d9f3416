#include "queue_model.h"

#include <algorithm>
#include <cstring>

namespace {

bool isBits(const QString& regName)
{
    return factsOf(typeOf(regName)).bits;
}

// The merge gap bounds a piece, where it says something: 8 bits or one word for each of it. A
// frame holds 507 words.
int pieceLimit(bool bits)
{
    const int limit = bits ? wrapped(8LL * driver.mergeGap) : driver.mergeGap;
    if (limit < 1) {
        return bits ? 984 : 123;
    }
    return bits ? limit : std::min(limit, 507);
}

} // namespace

void QueueModel::write(const QueuedWrite& whole, std::deque<QueuedWrite>& dropped)
{
    const bool bits = isBits(whole.regName);
    const int limit = pieceLimit(bits);
    int done = 0;
    do {
        QueuedWrite piece = whole;
        piece.address = wrapped(static_cast<long long>(whole.address) + done);
        piece.length = std::min(limit, whole.length - done);
        const int bytes = bits ? 1 : 2;
        piece.data = whole.data.mid(done * bytes, piece.length * bytes);
        queuePiece(piece, dropped);
        done += piece.length;
    } while (done < whole.length);
}

void QueueModel::queuePiece(const QueuedWrite& piece, std::deque<QueuedWrite>& dropped)
{
    ++taken_;
    for (size_t i = queue_.size(); i-- > 1;) {
        QueuedWrite& queued = queue_[i];
        if (queued.station == piece.station && queued.regName == piece.regName &&
            queued.address == piece.address && queued.length == piece.length) {
            queued = piece;
            ++replaced_;
            return;
        }
    }
    if (queue_.size() > 512) {
        dropped.push_back(queue_[512]);
        queue_[512] = piece;
        ++dropped_;
    } else {
        queue_.push_back(piece);
    }
}

void QueueModel::headLeaves()
{
    if (!queue_.empty()) {
        queue_.pop_front();
        ++left_;
    }
}

void QueueModel::reset()
{
    reset_ += static_cast<long long>(queue_.size());
    queue_.clear();
}

void QueueModel::requireAgreement() const
{
    require(taken_ == left_ + replaced_ + dropped_ + reset_ + static_cast<long long>(queue_.size()),
            "every write has one end");
    require(driver.writeList.size() == static_cast<int>(queue_.size()),
            "the write list is as long as it should be");
    for (int i = 0; i < driver.writeList.size(); ++i) {
        require(sameRequest(queue_[static_cast<size_t>(i)], driver.writeList.at(i)),
                "the write list holds what was written");
    }
}

bool sameRequest(const QueuedWrite& write, const VARIABLE& request)
{
    return write.kind == request.kind && write.station == request.stationNo &&
           write.regName == request.regName && write.address == request.address &&
           write.length == request.length &&
           std::memcmp(write.data.constData(), request.data,
                       static_cast<size_t>(write.data.size())) == 0;
}
