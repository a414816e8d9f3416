// The window's end of the line's thread: asks it, and is told in batches. No call waits.
#ifndef DOV417_PANEL_LINE_THREAD_H
#define DOV417_PANEL_LINE_THREAD_H

#include <QObject>
#include <QThread>
#include <chrono>
#include <vector>

#include "panel/desk/line_worker.h"

namespace dov417 {

class LineThread : public QObject {
    Q_OBJECT

public:
    // The library is to outlive it.
    explicit LineThread(const Library& library);
    // Calls end() where nobody has.
    ~LineThread() override;

    void open(const LineSetup& setup, const std::vector<Address>& watched,
              const simulator::SimulationOptions& controller = {});
    void close();
    // Closes it, too; what is still told of it belongs to an earlier generation. `watched`: values
    // that the next line, not open yet, will have.
    void leave(std::size_t watched);
    void watch(const std::vector<Address>& addresses);
    void setUnlocked(bool isUnlocked);
    // Nothing was heard of it for too long.
    void endHang();
    // Of the own controller, where there is one.
    void setConditions(const simulator::Conditions& conditions);
    // Its number, which the outcome will bear.
    long long write(const Address& address, const std::vector<unsigned char>& data);

    // Returns the number that its news carry. Only for this line(): nothing is moved on another.
    long long moveRecipe(int line, RecipeKind kind, const std::vector<RecipeEntry>& entries);
    void cancelRecipe(long long number);
    void setGap(int gap);

    // What is asked for last: what is told of something earlier is out of date.
    int line() const
    {
        return line_;
    }
    int generation() const
    {
        return generation_;
    }

    // Leaves the line quiet and ends the thread, however long that takes it but not longer than
    // this. False where it still hangs in a port: the program can only be ended then without
    // waiting for it, by std::_Exit().
    bool end(std::chrono::milliseconds patience = std::chrono::seconds(4));

signals:
    // May be of an earlier line or generation: compare. Once the slots return, the next one may
    // come.
    void batchCame(const dov417::LineBatch& batch);
    void recipeTold(const dov417::RecipeNews& news);

private:
    template <typename Call>
    void ask(Call call);

    QThread* const thread_; // left to itself where it hangs
    LineWorker* const worker_;
    int line_ = 0;
    int generation_ = 0;
    long long writes_ = 0;
    long long recipes_ = 0;
    bool hasEnded_ = false;
};

} // namespace dov417

#endif
