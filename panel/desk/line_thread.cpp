#include "panel/desk/line_thread.h"

#include <utility>

namespace dov417 {

LineThread::LineThread(const Library& library)
    : thread_(new QThread), worker_(new LineWorker(library))
{
    worker_->moveToThread(thread_);
    connect(thread_, &QThread::finished, worker_, &QObject::deleteLater);
    // At once: who waits for the thread's end runs no event loop.
    connect(worker_, &LineWorker::finished, thread_, &QThread::quit, Qt::DirectConnection);
    connect(worker_, &LineWorker::batchReady, this, [this](const LineBatch& batch) {
        emit batchCame(batch);
        ask([](LineWorker& worker) { worker.batchSeen(); });
    });
    connect(&worker_->recipes(), &RecipeWorker::told, this, &LineThread::recipeTold);
    thread_->setObjectName("line");
    thread_->start();
}

LineThread::~LineThread()
{
    end();
}

template <typename Call>
void LineThread::ask(Call call)
{
    LineWorker* const worker = worker_;
    QMetaObject::invokeMethod(
        worker, [worker, call]() { call(*worker); }, Qt::QueuedConnection);
}

void LineThread::open(const LineSetup& setup, const std::vector<Address>& watched,
                      const simulator::SimulationOptions& controller)
{
    const LineOrder order{++line_, ++generation_, setup, controller, watched};
    ask([order](LineWorker& worker) { worker.open(order); });
}

void LineThread::close()
{
    ask([](LineWorker& worker) { worker.close(); });
}

void LineThread::leave(std::size_t watched)
{
    ask([line = ++line_, generation = ++generation_, watched](LineWorker& worker) {
        worker.leave(line, generation, watched);
    });
}

void LineThread::watch(const std::vector<Address>& addresses)
{
    ask([generation = ++generation_, addresses](LineWorker& worker) {
        worker.watch(generation, addresses);
    });
}

void LineThread::setUnlocked(bool isUnlocked)
{
    ask([line = line_, isUnlocked, asked = Clock::now()](LineWorker& worker) {
        worker.setUnlocked(line, isUnlocked, asked);
    });
}

void LineThread::endHang()
{
    const Clock::time_point told = Clock::now();
    worker_->tellHang(told); // it does not take what is asked of it
    ask([line = line_, told](LineWorker& worker) { worker.endHang(line, told); });
}

void LineThread::setConditions(const simulator::Conditions& conditions)
{
    ask([line = line_, conditions](LineWorker& worker) { worker.setConditions(line, conditions); });
}

long long LineThread::write(const Address& address, const std::vector<unsigned char>& data)
{
    const WriteOrder order{++writes_, line_, address, data, Clock::now()};
    ask([order](LineWorker& worker) { worker.write(order); });
    return order.number;
}

long long LineThread::moveRecipe(int line, RecipeKind kind, const std::vector<RecipeEntry>& entries)
{
    const RecipeOrder order{++recipes_, line, kind, entries, Clock::now()};
    ask([order](LineWorker& worker) { worker.moveRecipe(order); });
    return order.number;
}

void LineThread::cancelRecipe(long long number)
{
    ask([number](LineWorker& worker) { worker.cancelRecipe(number); });
}

void LineThread::setGap(int gap)
{
    ask([line = line_, gap](LineWorker& worker) { worker.setGap(line, gap); });
}

bool LineThread::end(std::chrono::milliseconds patience)
{
    if (hasEnded_)
        return true;
    disconnect(worker_, &LineWorker::batchReady, this, nullptr);
    disconnect(&worker_->recipes(), &RecipeWorker::told, this, nullptr);
    ask([](LineWorker& worker) { worker.finish(); });
    hasEnded_ = thread_->wait(static_cast<unsigned long>(patience.count()));
    if (hasEnded_)
        delete thread_;
    return hasEnded_;
}

} // namespace dov417
