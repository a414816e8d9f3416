#include "model_check.h"

#include <algorithm>
#include <array>
#include <deque>

#include "late_world.h"
#include "line/crc16.h"
#include "link/exchange.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int writtenAddress = 0x1000;
constexpr int firstAddress = 0x100;
constexpr int writtenValue = 1;
constexpr milliseconds horizon(30000);
constexpr milliseconds soon(5); // nothing else happens before a timer that is due so soon

struct Question {
    const char* name;
    int station;
    bool isWrite;
    int address;
};
constexpr std::array<Question, 4> questions = {{{"read a", 1, false, writtenAddress},
                                                {"read b", 1, false, firstAddress},
                                                {"read c", 2, false, firstAddress},
                                                {"write a", 1, true, writtenAddress}}};

struct Event {
    enum class Kind {
        ask,
        replyComes,
        replyComesAndStays,
        replyIsLost,
        timePasses
    };
    Kind kind;
    std::size_t index; // of the question or the station
};

std::string textOf(const Event& event)
{
    const std::string station = std::to_string(event.index + 1);
    switch (event.kind) {
    case Event::Kind::ask:
        return questions.at(event.index).name;
    case Event::Kind::replyComes:
        return "reply of " + station + " comes";
    case Event::Kind::replyComesAndStays:
        return "reply of " + station + " comes, and once more later";
    case Event::Kind::replyIsLost:
        return "reply of " + station + " is lost";
    case Event::Kind::timePasses:
        return "time passes";
    }
    return std::string();
}

// One state; a copy goes on by itself.
class Model {
public:
    explicit Model(const ModelSettings& settings) : settings_(settings), exchange_(lineOfCurrent())
    {
        current_ = this;
        ExchangeSettings link;
        link.timeout = {milliseconds(500), seconds(15), settings.isTimeoutFixed};
        link.turnaround = milliseconds(100);
        link.replyGap = milliseconds(100);
        link.horizon = horizon;
        link.isShared = settings.isShared;
        exchange_.start(link, now_);
    }

    std::vector<Event> events() const
    {
        std::vector<Event> possible;
        if (!isAsking_)
            for (std::size_t i = 0; i < questions.size(); ++i)
                possible.push_back({Event::Kind::ask, i});
        for (std::size_t i = 0; i < due_.size(); ++i) {
            if (due_.at(i).empty())
                continue;
            possible.push_back({Event::Kind::replyComes, i});
            possible.push_back({Event::Kind::replyIsLost, i});
            if (settings_.repliesTwice)
                possible.push_back({Event::Kind::replyComesAndStays, i});
        }
        if (wake_ != Clock::time_point::max())
            possible.push_back({Event::Kind::timePasses, 0});
        return possible;
    }

    void apply(const Event& event)
    {
        current_ = this;
        switch (event.kind) {
        case Event::Kind::ask:
            ask(questions.at(event.index));
            break;
        case Event::Kind::replyComes:
        case Event::Kind::replyComesAndStays:
            now_ += milliseconds(1);
            bytes_ = due_.at(event.index).front().reply;
            if (event.kind == Event::Kind::replyComes)
                due_.at(event.index).pop_front();
            exchange_.bytesCame(bytes_, now_);
            break;
        case Event::Kind::replyIsLost:
            due_.at(event.index).pop_front();
            break;
        case Event::Kind::timePasses:
            fire();
            break;
        }
        while (wake_ <= now_ + soon)
            fire();
        // A station begins to answer within the horizon, or not at all.
        for (std::deque<Due>& due : due_)
            while (!due.empty() && due.front().askedAt + horizon <= now_)
                due.pop_front();
    }

    const std::string& wrong() const
    {
        return wrong_;
    }
    long long goodReplies() const
    {
        return goodReplies_;
    }

private:
    struct Due {
        QByteArray reply;
        Clock::time_point askedAt;
    };

    static ExchangeLine lineOfCurrent()
    {
        ExchangeLine line;
        line.write = [](const QByteArray& bytes) { current_->serve(bytes); };
        line.bytesWait = []() { return false; };
        line.wakeAt = [](Clock::time_point when) { current_->wake_ = when; };
        line.sleep = []() { current_->wake_ = Clock::time_point::max(); };
        line.sent = [](const Transmission&) {};
        line.markerEnded = [](const Transmission&) {};
        line.stray = [](const Stray&) {};
        line.notice = [](const std::string&) {};
        line.doubt = []() {};
        return line;
    }

    void ask(const Question& question)
    {
        isAsking_ = true;
        asked_ = &question;
        Transmission request;
        request.sent = withCrc(
            question.isWrite ? writeRequestOf(question.station, question.address, writtenValue)
                             : readRequestOf(question.station, question.address, 1));
        request.replyLength = question.isWrite ? 8 : 7;
        request.request.length = 1;
        exchange_.transact(
            request, [](const Transmission& ended) { current_->ended(ended); }, now_);
    }

    void fire()
    {
        now_ = std::max(now_, wake_);
        wake_ = Clock::time_point::max();
        exchange_.timerDue(now_);
    }

    // What the station does at once, and says later.
    void serve(const QByteArray& request)
    {
        std::deque<Due>& due = due_.at(static_cast<std::size_t>(request.at(0)) - 1);
        if (settings_.dropsWhenAsked)
            due.clear();
        QByteArray reply = request;
        const int address = static_cast<unsigned char>(request.at(2)) * 256 +
                            static_cast<unsigned char>(request.at(3));
        const bool isRefused = request.at(1) == 8 ? settings_.diagnostics == 0
                                                  : settings_.refuses && address == firstAddress;
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
        due.push_back({reply, now_});
    }

    int valueOf(int address) const
    {
        return address == writtenAddress ? (isWritten_ ? writtenValue : 0) : 0x20 + (address & 0xF);
    }

    void ended(const Transmission& ended)
    {
        isAsking_ = false;
        if (!isGood(ended))
            return;
        ++goodReplies_;
        if (asked_->isWrite) {
            if (!isWritten_)
                wrong_ = "a write is confirmed that was not done";
            isNew_ = true;
            return;
        }
        const int shown = wordOf(ended, 0) & 0xFF;
        if (wordOf(ended, 0) >> 8 != asked_->station)
            wrong_ = "the value of another station is shown";
        else if (asked_->address != writtenAddress && shown != valueOf(asked_->address))
            wrong_ = "the value of another address is shown";
        else if (asked_->address == writtenAddress && shown > writtenValue)
            wrong_ = "the value of another address is shown as what can be written";
        else if (asked_->address == writtenAddress && isNew_ && shown != writtenValue)
            wrong_ = "an older value is shown after a newer one, or after the write was confirmed";
        isNew_ = isNew_ || (asked_->address == writtenAddress && shown == writtenValue);
    }

    static Model* current_;

    ModelSettings settings_;
    Exchange exchange_;
    Clock::time_point now_ = Clock::time_point() + std::chrono::hours(1);
    Clock::time_point wake_ = Clock::time_point::max();
    std::array<std::deque<Due>, 2> due_;
    QByteArray bytes_;
    const Question* asked_ = nullptr;
    bool isAsking_ = false;
    bool isWritten_ = false;
    bool isNew_ = false; // the written value was shown, or the write confirmed
    long long goodReplies_ = 0;
    std::string wrong_;
};

Model* Model::current_ = nullptr;

void explore(const Model& model, int depth, ModelResult& result)
{
    ++result.states;
    if (!model.wrong().empty()) {
        result.wrong = model.wrong();
        return;
    }
    if (depth == 0) {
        result.goodReplies += model.goodReplies();
        return;
    }
    for (const Event& event : model.events()) {
        Model next = model;
        next.apply(event);
        result.path.push_back(textOf(event));
        explore(next, depth - 1, result);
        if (!result.wrong.empty())
            return;
        result.path.pop_back();
    }
}

std::string textOf(const ModelSettings& settings)
{
    return std::string(settings.diagnostics > 0    ? "echo"
                       : settings.diagnostics == 0 ? "exception to the echo"
                                                   : "no word to the echo") +
           (settings.isTimeoutFixed ? ", fixed time-out" : ", learning time-out") +
           (settings.isShared ? ", shared line" : "") + (settings.refuses ? ", refusal" : "") +
           (settings.dropsWhenAsked ? ", drops its reply" : "");
}

} // namespace

ModelResult checkModel(const ModelSettings& settings)
{
    ModelResult result;
    explore(Model(settings), settings.depth, result);
    return result;
}

ModelResult checkEveryKind(int depth)
{
    ModelResult all;
    all.kinds = 0;
    for (const int diagnostics : {1, 0, -1}) {
        for (int kind = 0; kind < 16 && all.wrong.empty(); ++kind) {
            ModelSettings settings;
            settings.depth = depth;
            settings.diagnostics = diagnostics;
            settings.isTimeoutFixed = (kind & 1) != 0;
            settings.isShared = (kind & 2) != 0;
            settings.refuses = (kind & 4) != 0;
            settings.dropsWhenAsked = (kind & 8) != 0;
            const ModelResult result = checkModel(settings);
            ++all.kinds;
            all.states += result.states;
            all.goodReplies += result.goodReplies;
            all.path = result.path;
            if (!result.wrong.empty())
                all.wrong = textOf(settings) + ": " + result.wrong;
        }
    }
    return all;
}

std::string textOf(const ModelResult& result)
{
    std::string text = std::to_string(result.kinds) + " kinds of stations and lines, " +
                       std::to_string(result.states) + " states, " +
                       std::to_string(result.goodReplies) + " good replies: ";
    text += result.wrong.empty() ? "no path to a wrong value" : result.wrong;
    for (const std::string& event : result.path)
        text += "\n  " + event;
    return text;
}

} // namespace dov417
