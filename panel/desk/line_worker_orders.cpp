// What the window orders of a line once it is open.
#include "panel/desk/line_worker.h"

#include <memory>

#include "session/piece_results.h"

namespace dov417 {

namespace {

// Of a write that goes out in several pieces: its outcome once each has one.
struct PiecesUnderWay {
    std::size_t waiting = 0;
    PieceResults results;
};

} // namespace

bool LineWorker::isTooOld(Clock::time_point asked) const
{
    return asked.time_since_epoch().count() < hangTold_ || Clock::now() - asked > orderPatience;
}

// Nothing that was meant for one controller may go out to another.
std::string LineWorker::refusal(int line) const
{
    if (line != line_)
        return tr("another line was opened meanwhile").toStdString();
    if (!session_)
        return tr("the line is closed").toStdString();
    return std::string();
}

std::string LineWorker::writeRefusal(int line, Clock::time_point asked) const
{
    if (std::string why = refusal(line); !why.empty())
        return why;
    if (state_.phase != LinePhase::open)
        return portIsAway().toStdString();
    if (!state_.isUnlocked)
        return tr("writing is locked on this line").toStdString();
    if (isTooOld(asked))
        return tr("the port hung; nothing was written").toStdString();
    return std::string();
}

void LineWorker::setUnlocked(int line, bool isUnlocked, Clock::time_point asked)
{
    if (line != line_ || (isUnlocked && isTooOld(asked)))
        return;
    state_.isUnlocked = isUnlocked && (state_.isSimulated || state_.phase == LinePhase::open);
    hasNews_ = true;
    collected();
}

void LineWorker::endHang(int line, Clock::time_point told)
{
    const bool hasHung = Clock::now() - told > pulse;
    if (line == line_ && session_ && hasHung)
        endWithPort(tr("the port hung").toStdString());
}

void LineWorker::write(const WriteOrder& order)
{
    const auto told = [this, number = order.number](const Result& result) {
        collector_.add(WriteOutcome{number, result});
        collected();
    };
    if (const std::string why = writeRefusal(order.line, order.asked); !why.empty()) {
        told(Result::refused(why));
        return;
    }
    std::vector<Write> pieces;
    try {
        pieces = writePieces(order.address, order.data, session_->settings().gap);
    } catch (const Failure& failure) {
        told(Result::refused(failure.what()));
        return;
    }
    const auto whole = std::make_shared<PiecesUnderWay>();
    whole->waiting = pieces.size();
    for (const Write& piece : pieces)
        session_->write(piece, [this, whole, told, address = piece.address](const Result& result) {
            whole->results.add(address, result);
            if (--whole->waiting == 0)
                told(whole->results.whole(library_));
        });
    hasNews_ = true;
    collected();
}

void LineWorker::moveRecipe(const RecipeOrder& order)
{
    const std::string why = order.kind == RecipeKind::download
                                ? writeRefusal(order.line, order.asked)
                                : refusal(order.line);
    if (why.empty())
        recipes_.start(*session_, order);
    else
        recipes_.refuse(order, why);
}

// The driver has no other way to let go of a frame of a recipe.
void LineWorker::cancelRecipe(long long number)
{
    if (session_ && recipes_.cancel(number))
        session_->endRequests(RecipeWorker::cancelled());
}

void LineWorker::setGap(int line, int gap)
{
    if (!refusal(line).empty())
        return; // the next line is opened with settings of its own
    SessionSettings settings = session_->settings();
    settings.gap = gap;
    session_->setSettings(settings);
    cycleBegan_ = Clock::now();
}

} // namespace dov417
