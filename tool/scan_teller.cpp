#include "tool/scan_teller.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

#include "line/counted.h"
#include "tool/scan_words.h"
#include "tool/screen.h"

namespace dov417 {

namespace {

// More are not on one line without a repeater.
constexpr int stationsOfOneLine = 32;

} // namespace

ScanTeller::ScanTeller(const ScanSettings& settings, bool json, const std::string& log,
                       const std::vector<Area>& areas, const StationNames& names)
    : settings_(settings), json_(json), names_(names), logName_(log), conversation_(areas)
{
    if (!log.empty()) {
        log_.open(log);
        log_.remark("scan");
    }
    barTimer_.setInterval(redrawMilliseconds);
    QObject::connect(&barTimer_, &QTimer::timeout, &barTimer_, [this]() {
        hasBar_ = true;
        std::fprintf(stderr, "\r%s\033[K", barText_().c_str());
    });
}

LineScanEvents ScanTeller::events(std::function<void()> ended)
{
    LineScanEvents events;
    events.found = [this](const Found& each) { found(each); };
    events.heard = [this](const ScanHeard& each) { heard(each); };
    events.notice = [this](const std::string& text) { sayNotice(text); };
    events.passed = [this](Direction direction, const QByteArray& bytes,
                           const std::string& remark) { passed(direction, bytes, remark); };
    events.ended = [this, ended](const std::string& problem) {
        problem_ = problem;
        hasEnded_ = true;
        ended();
    };
    return events;
}

void ScanTeller::showBar(std::function<std::string()> text)
{
    barText_ = std::move(text);
    if (isatty(STDERR_FILENO) != 0)
        barTimer_.start();
}

void ScanTeller::hideBar()
{
    barTimer_.stop();
    clearBar();
    barText_ = nullptr;
}

const std::map<int, ScanLine>& ScanTeller::whereFound() const
{
    return whereFound_;
}

void ScanTeller::tellRange(const WordRun& run, const WordRange& range)
{
    isRangeUnknown_ = isRangeUnknown_ || range.kind == WordRange::unknown;
    const std::string words = rangeText(run, range.first, range.count);
    sayLine(json_ ? rangeJson(words, range).dump() : rangeLine(words, range));
}

void ScanTeller::tellRest(const WordRun& run, int known)
{
    if (known < run.count)
        tellRange(run, {run.first + known, run.count - known, WordRange::unknown, "interrupted"});
}

void ScanTeller::tellNotFound(const WordRun& run)
{
    isRangeUnknown_ = true;
    sayNotice(rangeText(run, run.first, run.count) + ": its station was not found");
}

void ScanTeller::fail(const std::string& problem)
{
    problem_ = problem;
}

void ScanTeller::clearBar()
{
    if (std::exchange(hasBar_, false))
        std::fprintf(stderr, "\r\033[K");
}

void ScanTeller::sayLine(const std::string& text)
{
    clearBar();
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

void ScanTeller::sayNotice(const std::string& text)
{
    clearBar();
    if (json_)
        sayLine(nlohmann::ordered_json{{"notice", text}}.dump());
    else
        std::fprintf(stderr, "dov417: %s\n", text.c_str());
}

void ScanTeller::found(const Found& found)
{
    ++foundCount_;
    whereFound_.insert({found.station, found.line});
    lines_.insert(atText(found.line));
    sayLine(json_ ? foundJson(found, names_).dump() : foundText(found, settings_.timeout, names_));
}

void ScanTeller::heard(const ScanHeard& heard)
{
    isInUse_ = isInUse_ || heard.kind == HeardKind::inUse;
    if (json_)
        sayLine(heardJson(heard, settings_.asksAnyway, names_).dump());
    else
        sayNotice(heardText(heard, settings_.asksAnyway, names_));
}

void ScanTeller::passed(Direction direction, const QByteArray& bytes, const std::string& remark)
{
    if (!log_.isOpen())
        return;
    const std::string meaning = direction == Direction::sent       ? conversation_.request(bytes)
                                : direction == Direction::received ? conversation_.reply(bytes)
                                                                   : remark;
    log_.add({std::chrono::time_point_cast<Micros>(std::chrono::system_clock::now()), direction,
              bytes, meaning});
}

void ScanTeller::interrupt()
{
    isInterrupted_ = true;
}

bool ScanTeller::isInterrupted() const
{
    return isInterrupted_;
}

bool ScanTeller::hasFailed() const
{
    return !problem_.empty();
}

bool ScanTeller::hasEnded() const
{
    return hasEnded_;
}

bool ScanTeller::isOverNetwork() const
{
    return !settings_.lines.front();
}

std::string ScanTeller::atLines(std::size_t count) const
{
    return isOverNetwork() ? std::string() : " at " + counted(count, "line setting");
}

// Others began to speak, and not all were found until then.
bool ScanTeller::isCut() const
{
    return isInUse_ && !settings_.asksAnyway && whereFound_.size() < settings_.stations.size();
}

// Of those that are expected. Where it was cut short an answer may have been disturbed.
bool ScanTeller::tellMissing()
{
    bool isMissing = false;
    for (const int station : settings_.stations) {
        if (names_.count(station) == 0 || whereFound_.count(station) > 0)
            continue;
        isMissing = true;
        if (!isCut() || asked_.count(station) == 0)
            sayNotice(stationText(station, names_) + " of the project " +
                      (isCut() ? "was not asked" : "does not answer"));
    }
    return isMissing;
}

bool ScanTeller::finish()
{
    barTimer_.stop();
    clearBar();
    if (settings_.isModbusTcp && foundCount_ > stationsOfOneLine &&
        whereFound_.size() == settings_.stations.size())
        sayNotice("whoever is asked answers: it may be one controller that looks at no number");
    const bool hasLostLog = log_.hasFailed();
    const bool wasAllAsked = problem_.empty() && !isInterrupted_ && !isInUse_;
    const bool isShort = isCut();
    const bool isMissing = (wasAllAsked || isShort) && foundCount_ > 0 && tellMissing();
    if (json_) {
        const std::string end = !problem_.empty() ? problem_
                                : isInterrupted_  ? "interrupted"
                                : isShort         ? "inUse"
                                                  : "complete";
        sayLine(nlohmann::ordered_json{{"end", end}, {"found", foundCount_}}.dump());
    } else {
        if (!problem_.empty())
            sayNotice(problem_);
        else if (isInterrupted_)
            sayNotice("interrupted: not everything was asked");
        else if (isShort)
            sayNotice("the line is in use: not everything was asked");
        if (foundCount_ > 0)
            std::printf("found %s%s\n",
                        counted(static_cast<std::size_t>(foundCount_), "station").c_str(),
                        atLines(lines_.size()).c_str());
        else if (!isInUse_ && !isInterrupted_ && problem_.empty())
            sayNotice("nobody answers: " + counted(settings_.stations.size(), "station") +
                      atLines(settings_.lines.size()) + " asked. Is the controller on, " +
                      (isOverNetwork()
                           ? "has the far end its speed and parity, is it given the time it needs"
                           : "are A and B the right way round") +
                      ", is its number among those asked?");
    }
    if (hasLostLog)
        std::fprintf(stderr, "dov417: the log %s could not be written\n", logName_.c_str());
    return foundCount_ > 0 && !isMissing && !isShort && !isRangeUnknown_ && problem_.empty() &&
           !hasLostLog;
}

} // namespace dov417
