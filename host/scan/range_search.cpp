#include "scan/range_search.h"

#include "line/frame_bytes.h"
#include "line/frame_text.h"
#include "scan/scan_frames.h"

namespace dov417 {

namespace {

constexpr int maxTries = 3;

} // namespace

RangeSearch::RangeSearch(SerialLine& line, const WordRun& run, const RangeSearchEvents& events)
    : line_(line), run_(run), halving_(run.first, run.count, events.found), events_(events)
{
}

void RangeSearch::start()
{
    ask(false);
}

void RangeSearch::stop()
{
    isStopping_ = true;
}

void RangeSearch::end()
{
    halving_.end();
}

int RangeSearch::known() const
{
    return halving_.known();
}

void RangeSearch::ask(bool repeats)
{
    const std::optional<RangeHalving::Block> block = halving_.block();
    if (!block || isStopping_) {
        finish();
        return;
    }
    const ScanQuestion question = readOf(run_.area, block->first, block->count);
    Transmission request;
    request.sent = question.frameTo(run_.station);
    request.replyLength = question.replyLength;
    request.repeats = repeats;
    tries_ = repeats ? tries_ + 1 : 1;
    line_.transact(request, [this](const Transmission& record) { ended(record); });
}

void RangeSearch::ended(const Transmission& record)
{
    events_.ended(record);
    const Reception& reception = record.reception;
    const std::string reason = reasonText(reception, record.replyLength);
    if (reception.result == LineResult::exception) {
        const int code = exceptionCode(reception);
        if (code == illegalAddress || code == illegalValue)
            halving_.isRefused(reason);
        else if (code == illegalFunction)
            halving_.isRefusedWhole(reason);
        else
            halving_.isUnknown(reason);
    } else if (isSound(reception) && reception.bytes.size() == record.replyLength) {
        halving_.isAnswered();
    } else if (tries_ < maxTries) {
        ask(true);
        return;
    } else {
        halving_.isUnknown(reason);
    }
    ask(false);
}

void RangeSearch::finish()
{
    halving_.end();
    events_.done();
}

} // namespace dov417
