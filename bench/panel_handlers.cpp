// How long the panel's window is busy with one thing at a time while it watches 5 000 tags, and
// what it keeps after many changes: panel_handlers [ROUNDS]. The longest of each, in milliseconds
// of the processor. In a round every tag changes, and the frames that bring them pass; each page is
// shown in turn. The page of lamps has 16 000 bits of its own afterwards, of which those of one
// reply change in a round.
#include <QApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>

#include "bench/panel_window.h"
#include "line/crc16.h"
#include "live/child_program.h"

using namespace dov417;

namespace {

constexpr int tags = 5000;
constexpr int registers = 4000;     // of R_W; the others are of a second station
constexpr int defaultRounds = 2000; // ten million changes
constexpr int wordsOfAFrame = 125;
constexpr int lampWords = 1000;
constexpr int wordsOfAnArea = 125;
constexpr int bitsOfAFrame = 2000; // no reply holds more
constexpr int lampsPage = 2;
constexpr int trendsPage = 3;
constexpr int planPage = 6;

// Of this thread's processor, so that others on the machine do not count.
double processorMs()
{
    timespec time = timespec();
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double longestMs(int times, const std::function<void(int)>& handler)
{
    double longest = 0;
    for (int i = 0; i < times; ++i) {
        const double began = processorMs();
        handler(i);
        longest = std::max(longest, processorMs() - began);
    }
    return longest;
}

// Resident, in KiB.
long memoryUse()
{
    std::ifstream status("/proc/self/statm");
    long whole = 0;
    long resident = 0;
    status >> whole >> resident;
    constexpr long pageKib = 4;
    return resident * pageKib;
}

std::vector<std::string> manyAddresses()
{
    std::vector<std::string> addresses;
    for (int i = 0; i < tags; ++i)
        addresses.push_back(std::to_string(1 + i / registers) +
                            "/R_W:" + std::to_string(i % registers));
    return addresses;
}

Passed replyOf(int round, int number)
{
    Passed passed;
    passed.what = Passed::What::ended;
    passed.at = Clock::now();
    Transmission& frame = passed.transmission;
    frame.number = static_cast<long long>(round) * (tags / wordsOfAFrame) + number;
    frame.request = {0, 1, "R_W", number * wordsOfAFrame, wordsOfAFrame};
    frame.sent = withCrc(QByteArray::fromHex("01030500007d"));
    frame.replyLength = 5 + 2 * wordsOfAFrame;
    frame.isCyclic = true;
    frame.sendBegin = frame.sendEnd = passed.at;
    frame.reception.result = LineResult::reply;
    frame.reception.bytes =
        withCrc(QByteArray::fromHex("0103fa") + QByteArray(2 * wordsOfAFrame, '\1'));
    frame.reception.firstByte = frame.reception.lastByte = frame.asOf = passed.at;
    frame.verdict = replyAccepted;
    return passed;
}

std::vector<std::string> lampAddresses()
{
    std::vector<std::string> addresses;
    for (int i = 0; i < lampWords; ++i) {
        const std::string station = std::to_string(1 + i / (2 * wordsOfAnArea));
        const char* const area = i / wordsOfAnArea % 2 == 0 ? "I_bit" : "M_bit";
        const std::string word = std::to_string(i % wordsOfAnArea);
        addresses.push_back(station + "/" + area + ":" + word + ".0.." + word + ".15");
    }
    return addresses;
}

// So many values from the first one on have changed.
LineBatch changesOf(const PanelTags& watched, std::size_t first, std::size_t count, int round)
{
    LineBatch batch;
    batch.made = Clock::now();
    batch.state.phase = LinePhase::open;
    for (std::size_t i = first; i < first + count; ++i) {
        View view;
        view.address = watched.values.at(i).address;
        view.hasValue = true;
        view.value = view.address.width == Width::bit
                         ? ValueBytes{static_cast<unsigned char>(round & 1)}
                         : ValueBytes{static_cast<unsigned char>(round),
                                      static_cast<unsigned char>(round >> 8)};
        view.changes = round;
        view.lastGood = view.lastChange = batch.made;
        batch.values.push_back(view);
    }
    return batch;
}

// As the line's thread would tell it.
LineBatch batchOf(const PanelTags& watched, int round)
{
    LineBatch batch = changesOf(watched, 0, watched.values.size(), round);
    batch.generation = 1;
    for (int i = 0; i < tags / wordsOfAFrame; ++i)
        batch.passed.push_back(replyOf(round, i));
    return batch;
}

void paint()
{
    QApplication::processEvents();
}

void print(const std::string& what, double milliseconds)
{
    std::printf("%s\t%.2f ms\n", what.c_str(), milliseconds);
}

// Its own process makes it; here it is taken up and painted.
void measurePlanning(MeasuredWindow& measured)
{
    MainWindow& window = measured.window;
    window.showPage(planPage);
    paint();
    measured.desk.setLineSetup(measured.desk.lineSetup()); // as if it was another one
    const PanelPage* const page = window.pages().at(planPage);
    double longest = 0;
    while (page->isBusy())
        longest = std::max(longest, longestMs(1, [](int) {
                               QApplication::processEvents(QEventLoop::WaitForMoreEvents);
                           }));
    print("Plan: another plan has come", longest);
    print("Plan: painting that", longestMs(1, [](int) { paint(); }));
}

void measureTrends(MeasuredWindow& measured)
{
    constexpr int turns = 100;
    measured.window.showPage(0);
    paint();
    print("Trends: arranging 300 curves",
          longestMs(1, [&](int) { plotAll(measured.window, measured.desk.tags().items); }));
    print("Trends: showing 300 curves",
          longestMs(1, [&](int) { measured.window.showPage(trendsPage); }));
    print("Trends: painting their plots first", longestMs(1, [](int) { paint(); }));
    double drawn = 0;
    for (int turn = 0; turn < turns; ++turn) {
        measured.desk.apply(batchOf(measured.desk.tags(), turn));
        drawn = std::max(drawn, longestMs(1, [](int) {
                             QApplication::processEvents(QEventLoop::WaitForMoreEvents);
                         }));
    }
    print("Trends: a turn of drawing 300 curves", drawn);
    print("Trends: other values are watched", longestMs(1, [&](int) {
              std::vector<Item> fewer = measured.desk.tags().items;
              fewer.pop_back();
              measured.desk.setItems(fewer);
          }));
}

void measureLamps(MeasuredWindow& measured, int rounds)
{
    PanelDesk& desk = measured.desk;
    measured.window.showPage(0);
    paint();
    const std::vector<Item> items = measured.itemsAt(lampAddresses());
    print("opening 16 000 bits", longestMs(1, [&](int) { desk.setItems(items); }));
    print("what that leaves to the next turns", longestMs(1, [](int) { paint(); }));
    print("showing the page Lamps", longestMs(1, [&](int) {
              measured.window.showPage(lampsPage);
              paint();
          }));
    double changed = 0;
    double painted = 0;
    for (int round = 1; round <= rounds; ++round) {
        const std::size_t bits = desk.tags().values.size();
        const std::size_t first = static_cast<std::size_t>(round) * bitsOfAFrame % bits;
        // Each time round all of them are the others.
        const int time = static_cast<int>(static_cast<std::size_t>(round) * bitsOfAFrame / bits);
        const LineBatch batch = changesOf(desk.tags(), first, bitsOfAFrame, time);
        changed = std::max(changed, longestMs(1, [&](int) { desk.play(batch); }));
        painted = std::max(painted, longestMs(1, [&](int) { paint(); }));
    }
    print("Lamps: the 2 000 of a reply have changed", changed);
    print("Lamps: painting that", painted);
}

int run(int rounds)
{
    MeasuredWindow measured;
    PanelDesk& desk = measured.desk;
    MainWindow& window = measured.window;
    window.showPage(1);
    window.show();
    paint();
    const std::vector<Item> items = measured.itemsAt(manyAddresses());
    print("opening them", longestMs(1, [&](int) { desk.setItems(items); }));
    print("showing them first, with what that leaves to the next turns",
          longestMs(1, [&](int) { paint(); }));
    // What remembers so many frames and no more is full from the start. What a batch leaves to the
    // event loop is done meanwhile, as it is in life.
    for (int round = -rounds * 5 / 4; round < 0; ++round) {
        desk.apply(batchOf(desk.tags(), round));
        if (round % 25 == 0)
            paint();
    }
    const int pages = static_cast<int>(window.pages().size());
    const int turn = std::max(1, rounds / (4 * pages)); // rounds that a page is shown
    struct Longest {
        double shown = 0;
        double changed = 0;
        double painted = 0;
    };
    std::vector<Longest> longest(window.pages().size());
    std::string memory = std::to_string(memoryUse());
    for (int round = 1; round <= rounds; ++round) {
        const int page = round / turn % pages;
        auto& [shown, changed, painted] = longest.at(static_cast<std::size_t>(page));
        shown = std::max(shown, longestMs(1, [&](int) {
                             window.showPage(page);
                             paint();
                         }));
        const LineBatch batch = batchOf(desk.tags(), round);
        changed = std::max(changed, longestMs(1, [&](int) { desk.apply(batch); }));
        painted = std::max(painted, longestMs(1, [&](int) { paint(); }));
        if (round % std::max(1, rounds / 4) == 0)
            memory += " " + std::to_string(memoryUse());
    }
    for (std::size_t i = 0; i < longest.size(); ++i) {
        if (i == lampsPage)
            continue; // there are none so far
        const std::string title = window.pages().at(i)->title().toStdString();
        print("showing the page " + title, longest.at(i).shown);
        print(title + ": all of them have changed", longest.at(i).changed);
        print(title + ": painting that", longest.at(i).painted);
    }
    window.showPage(1);
    paint();
    auto* const table = window.findChild<QTableView*>("values");
    auto* const search = window.findChild<QLineEdit*>("search");
    const QStringList typed = {"r", "r_", "r_w", "r_w:1", "r_w:12", "r_w:1", "r_w:", "", "2/", ""};
    print("filtering",
          longestMs(static_cast<int>(typed.size()), [&](int i) { search->setText(typed.at(i)); }));
    print("painting what was filtered", longestMs(1, [&](int) { paint(); }));
    print("scrolling", longestMs(100, [&](int i) {
              table->verticalScrollBar()->setValue(i * 40);
              paint();
          }));
    print("sorting", longestMs(4, [&](int i) {
              table->sortByColumn(i % 2, i < 2 ? Qt::AscendingOrder : Qt::DescendingOrder);
          }));
    measurePlanning(measured);
    std::printf("memory before and at each quarter of %lld changes\t%s KiB\n",
                static_cast<long long>(tags) * rounds, memory.c_str());
    measureTrends(measured);
    measureLamps(measured, std::max(1, rounds / 10));
    desk.end();
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv)) // which plans
        return *code;
    measureWithoutScreen();
    const QApplication application(argc, argv);
    return run(argc > 1 ? std::atoi(argv[1]) : defaultRounds);
}
