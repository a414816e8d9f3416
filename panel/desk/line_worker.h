// The line's side of the panel: session, link and own controller, all in one thread of their own.
//
// Everything here but the constructor runs in that thread. It tells the window in batches, one at a
// time: the next one goes out when the window has dealt with the last, and no more than one for
// each screen. What comes meanwhile is collected, so a slow window costs the line nothing and holds
// nothing up.
#ifndef DOV417_PANEL_LINE_WORKER_H
#define DOV417_PANEL_LINE_WORKER_H

#include <QObject>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <vector>

#include "live/live_line.h"
#include "panel/desk/batch_collector.h"
#include "panel/desk/own_controller.h"
#include "panel/desk/recipe_worker.h"
#include "session/session.h"

namespace dov417 {

// A line to open and what to watch there.
struct LineOrder {
    int line = 0;
    int generation = 0;
    LineSetup setup;
    simulator::SimulationOptions controller; // the own one's, if the setup asks for one
    std::vector<Address> watched;            // each once
};

struct WriteOrder {
    long long number = 0;
    int line = 0; // that it was meant for
    Address address;
    std::vector<unsigned char> data;
    Clock::time_point asked{};
};

class LineWorker : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds screenPause{40};
    // So often a batch is told in any case, with every value: that is how the window sees how old
    // each is, and that the line's thread lives.
    static constexpr std::chrono::milliseconds pulse{500};
    // An order to write that has waited longer is refused: the thread hung in a port meanwhile, and
    // whoever gave it has seen that nothing came of it.
    static constexpr std::chrono::milliseconds orderPatience{3000};

    explicit LineWorker(const Library& library);
    ~LineWorker() override;

    void open(const LineOrder& order);
    void close();
    // What is told from now on is of this line, which is not open, and of this generation.
    void leave(int line, int generation, std::size_t watched);
    void watch(int generation, const std::vector<Address>& addresses);
    // Nothing is written before; each line begins locked, and is again when its port has gone, but
    // for the own controller's. Without its port it stays so.
    void setUnlocked(int line, bool isUnlocked, Clock::time_point asked);
    // The window has heard nothing for too long, and says so at once. Where the thread hung until
    // now, what was under way ends as where the port goes: it would go on with nobody there.
    void endHang(int line, Clock::time_point told);
    // From any thread, before that: the window says that nothing is written. What was asked for
    // until then does not go out, however soon the thread goes on.
    void tellHang(Clock::time_point told)
    {
        hangTold_ = told.time_since_epoch().count();
    }
    void write(const WriteOrder& order);
    // Its recipes(), which tell what becomes of it.
    void moveRecipe(const RecipeOrder& order);
    // Ends every request of the session, the recipe's among them, if it is under way.
    void cancelRecipe(long long number);
    // Plans anew, with this merge gap; every value is old until it has been read again.
    void setGap(int line, int gap);
    RecipeWorker& recipes()
    {
        return recipes_;
    }
    void setConditions(int line, const simulator::Conditions& conditions);
    // The window has dealt with the batch.
    void batchSeen();
    // Leaves the line quiet, then tells that it has.
    void finish();

signals:
    void batchReady(const dov417::LineBatch& batch);
    void finished();

private:
    struct OpenLine;

    // Why nothing that was meant for this line is done; empty where it is.
    std::string refusal(int line) const;
    bool isTooOld(Clock::time_point asked) const;
    // The same of what writes.
    std::string writeRefusal(int line, Clock::time_point asked) const;
    void beginLine(int line, int generation, std::size_t watched);
    void makeLine(const LineOrder& order);
    void follow();
    void plan(const std::vector<Address>& addresses);
    void refuse(const std::string& reason);
    void note(const std::string& text);
    void portChanged(bool open, const std::string& message);
    void endWithPort(const std::string& message);
    void collected();
    void sendPulse();
    void send();
    LineState state();

    const Library& library_;
    BatchCollector collector_;
    LineState state_;
    int line_ = 0;
    long long cycles_ = 0;
    Clock::time_point cycleBegan_{};
    bool isSeen_ = true; // the last batch
    bool hasNews_ = false;
    std::shared_ptr<const LinkStatistics> statistics_;
    int pulses_ = 0;
    std::atomic<Clock::rep> hangTold_{0};
    QTimer screenTimer_;
    QTimer pulseTimer_;
    OwnController own_;
    std::unique_ptr<LiveLine> live_;
    std::unique_ptr<Session> session_;
    RecipeWorker recipes_;
};

} // namespace dov417

#endif
