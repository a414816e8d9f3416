#include "tool/watch_display.h"

#include <algorithm>
#include <utility>

#include "tool/screen.h"

namespace dov417 {

namespace {

// The bytes of one key come sooner, over a network too.
constexpr std::chrono::milliseconds keyPatience(100);

} // namespace

const char* const watchHasEnded = "watch has ended";

WatchDisplay::WatchDisplay(const Library& library, LiveCommand& live,
                           const std::vector<Item>& items, const std::vector<ViewLabel>& labels,
                           WatchTeller& teller)
    : library_(library), live_(live), session_(live.session()), items_(items), labels_(labels),
      teller_(teller), job_(session_, [this]() { written(); }),
      screen_(labels, Terminal::hasKeys(),
              {[this]() { live_.interrupt(); }, [this](std::size_t view) { return range(view); },
               [this](std::size_t view, const std::string& value) { write(view, value); }}),
      terminal_(Terminal::hasKeys(), {[this](const std::string& bytes) { came(bytes); },
                                      [this]() { draw(); }, [this]() { live_.interrupt(); }})
{
    escapeTimer_.setSingleShot(true);
    escapeTimer_.setInterval(keyPatience);
    QObject::connect(&escapeTimer_, &QTimer::timeout, &escapeTimer_,
                     [this]() { take(decoder_.giveUpWaiting(), false); });
    pauseTimer_.setSingleShot(true);
    pauseTimer_.setInterval(keyPatience);
    QObject::connect(&pauseTimer_, &QTimer::timeout, &pauseTimer_, [this]() {
        // Where this program was held up, the time alone does not tell.
        hasPaused_ = !Terminal::bytesWait();
        if (!hasPaused_)
            pauseTimer_.start();
    });
    redrawTimer_.setInterval(redrawMilliseconds);
    QObject::connect(&redrawTimer_, &QTimer::timeout, &redrawTimer_, [this]() { draw(); });
    redrawTimer_.start();
    // Whatever is at the port's end when it is back was not meant, nor need anybody see it then.
    QObject::connect(&session_, &Session::portChanged, &redrawTimer_,
                     [this](bool open, const std::string& message) {
                         if (!open && isWriting_)
                             session_.endWithPort(message);
                     });
}

void WatchDisplay::changed(const ViewChange& change)
{
    screen_.changed(change.view, change.index);
}

void WatchDisplay::draw()
{
    if (hasEnded_ || session_.views().size() != labels_.size())
        return; // nothing is watched yet, or any more
    const Clock::time_point now = Clock::now();
    const LinkStatistics& statistics = session_.statistics();
    const std::vector<std::string> brief = briefStatistics(statistics, now);
    WatchContent content{
        session_.views(), now, clockText(), brief.back() + "; " + brief.front(), brief, {}};
    for (const std::vector<std::string>& lines :
         {stationStatistics(statistics), requestStatistics(statistics)})
        content.allCounters.insert(content.allCounters.end(), lines.begin(), lines.end());
    content.messages = teller_.messages();
    if (live_.isWaiting())
        content.messages.emplace_back(waitingForTheLastReply);

    std::string text = "\033[H"; // top left
    const char* end = "";
    for (const ScreenLine& line : screen_.paint(screenSize(), content)) {
        text += end;
        text += (line.isReversed ? "\033[7m" : "") + line.text +
                (line.isReversed ? "\033[0m" : "") + "\033[K";
        end = "\r\n";
    }
    Terminal::put(text + "\033[J"); // nothing below
}

std::string WatchDisplay::end()
{
    hasEnded_ = true;
    const std::string& why = live_.interruption();
    return isWriting_ ? writeReport(job_.tasks().front(), why.empty() ? watchHasEnded : why)
                      : std::string();
}

void WatchDisplay::came(const std::string& bytes)
{
    escapeTimer_.stop();
    take(decoder_.take(bytes), std::exchange(hasPaused_, false));
    pauseTimer_.start();
    if (decoder_.awaitsMore())
        escapeTimer_.start();
}

void WatchDisplay::take(const std::vector<Key>& keys, bool afterPause)
{
    screen_.take(keys, session_.views(), clockText(), afterPause);
    draw();
}

// One value of an item, where it has several.
Item WatchDisplay::itemOf(std::size_t view) const
{
    std::size_t first = 0;
    for (const Item& item : items_) {
        const auto count = static_cast<std::size_t>(valueCount(item.address));
        if (view < first + count) {
            Item one = item;
            one.name = labels_.at(view).name;
            one.address = session_.views().at(view).address;
            return one;
        }
        first += count;
    }
    throw UsageFailure("there is no such line");
}

std::string WatchDisplay::range(std::size_t view) const
{
    if (isWriting_)
        throw UsageFailure("the last write has no outcome yet");
    const Item item = itemOf(view);
    requireAccess(library_, item.address, Access::write);
    return rangeText(item);
}

void WatchDisplay::write(std::size_t view, const std::string& value)
{
    // It would go out whenever the port is back, with nobody there to see it.
    if (!session_.statistics().portIsOpen)
        throw UsageFailure("the port is away");
    const Item item = itemOf(view);
    requireUntornValues(library_, {item}, session_.settings().gap);
    const WriteTask task = writeTask(item, {value});
    isWriting_ = true;
    screen_.showOutcome("writing " + item.name + " ...");
    job_.start({task});
}

void WatchDisplay::written()
{
    isWriting_ = false;
    if (hasEnded_)
        return;
    const std::string report = writeReport(job_.tasks().front(), std::string());
    screen_.showOutcome(clockText() + " " + report);
    teller_.keep(report);
    draw();
}

} // namespace dov417
