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

// Nothing that was meant for one controller may go out to another.
std::string LineWorker::refusal(int line, bool isWriting) const
{
    if (line != line_)
        return tr("another line was opened meanwhile").toStdString();
    if (isWriting && !state_.isUnlocked)
        return tr("writing is locked on this line").toStdString();
    return session_ ? std::string() : tr("the line is closed").toStdString();
}

void LineWorker::write(const WriteOrder& order)
{
    const auto told = [this, number = order.number](const Result& result) {
        collector_.add(WriteOutcome{number, result});
        collected();
    };
    if (const std::string why = refusal(order.line, true); !why.empty()) {
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
    const std::string why = refusal(order.line, order.kind == RecipeKind::download);
    if (why.empty())
        recipes_.start(*session_, order);
    else
        recipes_.refuse(order, why);
}

// The driver has no other way to let go of a frame of a recipe.
void LineWorker::cancelRecipe(long long number)
{
    if (session_ && recipes_.cancel(number))
        session_->endRequests(recipeCancelled);
}

void LineWorker::setGap(int line, int gap)
{
    if (!refusal(line, false).empty())
        return; // the next line is opened with settings of its own
    SessionSettings settings = session_->settings();
    settings.gap = gap;
    session_->setSettings(settings);
    cycleBegan_ = Clock::now();
}

} // namespace dov417
