#include "late_model.h"

#include <algorithm>

#include "late_world.h"
#include "line/crc16.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int writtenValue = 1;
constexpr milliseconds horizon(30000);
constexpr milliseconds soon(5); // nothing else happens before a timer that is due so soon

} // namespace

LateModel* LateModel::current = nullptr;

LateModel::LateModel(const LateModelSettings& settings, const std::vector<LateQuestion>& questions)
    : settings_(settings), questions_(&questions), exchange_(lineOfCurrent())
{
    current = this;
    ExchangeSettings link;
    link.timeout = {milliseconds(500), seconds(15), settings.isTimeoutFixed};
    link.turnaround = milliseconds(100);
    link.replyGap = milliseconds(100);
    link.horizon = horizon;
    link.mayMark = settings.mayMark;
    link.isShared = settings.isShared;
    exchange_.start(link, now_);
}

bool LateModel::isPossible(const LateEvent& event) const
{
    switch (event.kind) {
    case LateEvent::Kind::ask:
        return !isAsking_;
    case LateEvent::Kind::timePasses:
    case LateEvent::Kind::timerIsLate:
        return wake_ != Clock::time_point::max();
    case LateEvent::Kind::timeGoesBy:
        return true;
    case LateEvent::Kind::hearsNoMore:
    case LateEvent::Kind::hearsAgain:
        return isDeaf_.at(event.index) == (event.kind == LateEvent::Kind::hearsAgain);
    case LateEvent::Kind::replyIsLost:
        return awaitsReply(event.index);
    case LateEvent::Kind::replyIsSpoilt:
        return awaitsReply(event.index) && !due_.at(event.index).front().hasBegun &&
               !due_.at(event.index).front().isSpoilt;
    case LateEvent::Kind::replyComes:
    case LateEvent::Kind::replyComesAndStays:
    case LateEvent::Kind::replyBegins:
        break;
    }
    // The wires are free for one at a time.
    const std::deque<Due>& other = due_.at(1 - event.index);
    return awaitsReply(event.index) && (other.empty() || !other.front().hasBegun);
}

void LateModel::apply(const LateEvent& event)
{
    current = this;
    switch (event.kind) {
    case LateEvent::Kind::ask:
        ask(questions_->at(event.index));
        break;
    case LateEvent::Kind::replyComes:
        come(event.index, static_cast<int>(due_.at(event.index).front().reply.size()));
        break;
    case LateEvent::Kind::replyComesAndStays: {
        const Due twice = due_.at(event.index).front();
        come(event.index, static_cast<int>(twice.reply.size()));
        due_.at(event.index).push_front(twice);
        due_.at(event.index).front().isCopy = true;
        break;
    }
    case LateEvent::Kind::replyBegins:
        come(event.index, event.amount);
        break;
    case LateEvent::Kind::replyIsSpoilt: {
        Due& due = due_.at(event.index).front();
        const int bit = event.amount % (8 * static_cast<int>(due.reply.size()));
        due.reply[bit / 8] = static_cast<char>(due.reply.at(bit / 8) ^ (1 << (bit % 8)));
        due.isSpoilt = true;
        break;
    }
    case LateEvent::Kind::replyIsLost:
        due_.at(event.index).pop_front();
        break;
    case LateEvent::Kind::hearsNoMore:
    case LateEvent::Kind::hearsAgain:
        isDeaf_.at(event.index) = event.kind == LateEvent::Kind::hearsNoMore;
        break;
    case LateEvent::Kind::timePasses:
        fire();
        break;
    case LateEvent::Kind::timerIsLate:
        now_ = std::max(now_, wake_) + milliseconds(event.amount);
        fire();
        break;
    case LateEvent::Kind::timeGoesBy:
        now_ = std::max(now_, std::min(now_ + milliseconds(event.amount), wake_));
        break;
    }
    while (!echo_.isEmpty() || wake_ <= now_ + soon) {
        if (echo_.isEmpty())
            fire();
        else
            hearItself();
    }
    // A station begins to answer within the horizon, or not at all.
    for (std::deque<Due>& due : due_)
        while (!due.empty() && due.front().askedAt + horizon <= now_)
            due.pop_front();
}

const std::string& LateModel::wrong() const
{
    return wrong_;
}

long long LateModel::goodReplies() const
{
    return goodReplies_;
}

bool LateModel::isAsking() const
{
    return isAsking_;
}

bool LateModel::awaitsReply(std::size_t station) const
{
    return !due_.at(station).empty();
}

ExchangeLine LateModel::lineOfCurrent()
{
    ExchangeLine line;
    line.write = [](const QByteArray& bytes) { current->serve(bytes); };
    line.bytesWait = []() { return false; };
    line.wakeAt = [](Clock::time_point when) { current->wake_ = when; };
    line.sleep = []() { current->wake_ = Clock::time_point::max(); };
    line.sent = [](const Transmission&) {};
    line.markerEnded = [](const Transmission&) {};
    line.stray = [](const Stray&) {};
    line.notice = [](const std::string&) {};
    line.doubt = []() { current->isNew_ = false; };
    return line;
}

void LateModel::ask(const LateQuestion& question)
{
    isAsking_ = true;
    asked_ = &question;
    Transmission request;
    request.sent = withCrc(question.isWrite
                               ? writeRequestOf(question.station, question.address, writtenValue)
                               : readRequestOf(question.station, question.address, question.count));
    request.replyLength = question.isWrite ? 8 : 5 + 2 * question.count;
    request.request.length = question.count;
    request.isCyclic = request.isToSilent = question.isProbe;
    exchange_.transact(
        request, [](const Transmission& ended) { current->ended(ended); }, now_);
}

void LateModel::come(std::size_t station, int bytes)
{
    now_ += milliseconds(1);
    Due& due = due_.at(station).front();
    const QByteArray came = due.reply.left(std::max(1, bytes));
    due.reply.remove(0, came.size());
    due.hasBegun = true;
    if (due.reply.isEmpty())
        due_.at(station).pop_front();
    exchange_.bytesCame(came, now_);
}

void LateModel::fire()
{
    now_ = std::max(now_, wake_);
    wake_ = Clock::time_point::max();
    exchange_.timerDue(now_);
}

void LateModel::hearItself()
{
    now_ += milliseconds(1);
    const QByteArray echo = std::move(echo_);
    echo_.clear();
    exchange_.bytesCame(echo, now_);
}

// What the station does at once, and says later.
void LateModel::serve(const QByteArray& request)
{
    if (settings_.echoes)
        echo_ = request;
    const std::size_t station = static_cast<std::size_t>(request.at(0)) - 1;
    if (isDeaf_.at(station))
        return;
    std::deque<Due>& due = due_.at(station);
    if (settings_.dropsWhenAsked)
        due.erase(
            std::remove_if(due.begin(), due.end(), [](const Due& each) { return !each.isCopy; }),
            due.end());
    QByteArray reply = request;
    const int address =
        static_cast<unsigned char>(request.at(2)) * 256 + static_cast<unsigned char>(request.at(3));
    const bool isRefused = request.at(1) == 8 ? settings_.diagnostics == 0
                                              : settings_.refuses && address == otherAddress;
    if (isRefused) {
        reply = request.left(1);
        reply.append(static_cast<char>(request.at(1) | 0x80)).append('\1');
        reply = withCrc(reply);
    } else if (request.at(1) == 6) {
        isWritten_ = true;
    } else if (request.at(1) == 3) {
        reply = request.left(2);
        const int count = request.at(5);
        reply.append(static_cast<char>(2 * count));
        for (int i = 0; i < count; ++i)
            reply.append(static_cast<char>(request.at(0)))
                .append(static_cast<char>(valueOf(address + i)));
        reply = withCrc(reply);
    } else if (settings_.diagnostics < 0) {
        return;
    }
    due.push_back({reply, now_, false, false, false});
}

int LateModel::valueOf(int address) const
{
    return address == writtenAddress ? (isWritten_ ? writtenValue : 0) : 0x20 + (address & 0xF);
}

void LateModel::ended(const Transmission& ended)
{
    isAsking_ = false;
    if (!isGood(ended) || (settings_.judgesWhenWary && !exchange_.isWary(now_)))
        return;
    ++goodReplies_;
    if (asked_->isWrite) {
        if (!isWritten_)
            wrong_ = "a write is confirmed that was not done";
        isNew_ = true;
        return;
    }
    for (int i = 0; i < asked_->count; ++i)
        judgeWord(asked_->address + i, wordOf(ended, i));
}

void LateModel::judgeWord(int address, int word)
{
    const int shown = word & 0xFF;
    if (word >> 8 != asked_->station)
        wrong_ = "the value of another station is shown";
    else if (address != writtenAddress && shown != valueOf(address))
        wrong_ = "the value of another address is shown";
    else if (address == writtenAddress && shown > writtenValue)
        wrong_ = "the value of another address is shown as what can be written";
    else if (address == writtenAddress && isNew_ && shown != writtenValue)
        wrong_ = "an older value is shown after a newer one, or after the write was confirmed";
    isNew_ = isNew_ || (address == writtenAddress && shown == writtenValue);
}

} // namespace dov417
