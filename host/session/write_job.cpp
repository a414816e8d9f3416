#include "session/write_job.h"

#include <utility>

namespace dov417 {

WriteJob::WriteJob(Session& session, std::function<void()> done)
    : session_(session), done_(std::move(done))
{
}

const std::vector<WriteTask>& WriteJob::tasks() const
{
    return tasks_;
}

void WriteJob::start(const std::vector<WriteTask>& tasks)
{
    tasks_ = tasks;
    areWritten_ = false;
    generation_ = session_.generation();
    read(&WriteJob::write);
}

// The tasks that can be read and have not failed.
void WriteJob::read(void (WriteJob::*then)(const ReadResults&))
{
    reading_.clear();
    std::vector<Address> addresses;
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
        if (tasks_.at(i).item.address.station == 0 || tasks_.at(i).result != WriteResult::waiting)
            continue;
        reading_.push_back(i);
        addresses.push_back(tasks_.at(i).item.address);
    }
    readAll(session_, addresses,
            [this, then](const ReadResults& results) { (this->*then)(results); });
}

bool WriteJob::goesOn(const ReadResults& results)
{
    if (session_.generation() == generation_)
        return true;
    for (std::size_t i = 0; i < results.size(); ++i)
        tasks_.at(reading_.at(i)).reason = results.at(i).reason;
    for (WriteTask& task : tasks_) {
        if (task.result != WriteResult::waiting)
            continue;
        task.result = areWritten_ ? WriteResult::unread : WriteResult::refused;
        if (task.reason.empty())
            task.reason = changedMeanwhile;
    }
    done_();
    return false;
}

void WriteJob::write(const ReadResults& results)
{
    if (!goesOn(results))
        return;
    for (std::size_t i = 0; i < reading_.size(); ++i)
        if (results.at(i).accepted)
            tasks_.at(reading_.at(i)).before =
                session_.cachedBytes(tasks_.at(reading_.at(i)).item.address);
    std::vector<std::pair<Write, std::size_t>> pieces;
    for (std::size_t i = 0; i < tasks_.size(); ++i)
        for (const Write& piece :
             writePieces(tasks_.at(i).item.address, tasks_.at(i).data, session_.settings().gap))
            pieces.emplace_back(piece, i);
    if (pieces.empty())
        read(&WriteJob::compare);
    piecesUnderWay_ = pieces.size();
    results_.assign(tasks_.size(), PieceResults());
    for (const auto& [piece, task] : pieces)
        session_.write(piece, [this, address = piece.address, task = task](const Result& result) {
            results_.at(task).add(address, result);
            if (--piecesUnderWay_ == 0)
                written();
        });
}

void WriteJob::written()
{
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
        WriteTask& task = tasks_.at(i);
        const Result result = results_.at(i).whole(session_.library());
        task.reason = result.reason;
        task.why = result.why;
        if (!result.accepted) {
            task.result = WriteResult::refused;
        } else if (task.item.address.station == 0 && task.result == WriteResult::waiting) {
            task.result = WriteResult::sent;
        }
    }
    areWritten_ = true;
    if (goesOn({}))
        read(&WriteJob::compare);
}

void WriteJob::compare(const ReadResults& results)
{
    for (std::size_t i = 0; i < reading_.size(); ++i) {
        WriteTask& task = tasks_.at(reading_.at(i));
        const Result& result = results.at(i);
        if (!result.accepted) {
            task.result = WriteResult::unread;
            task.reason = result.reason + (task.reason.empty() ? "" : "; " + task.reason);
            task.why = result.why;
            continue;
        }
        task.after = session_.cachedBytes(task.item.address);
        task.result = task.after == task.data ? WriteResult::confirmed : WriteResult::different;
    }
    done_();
}

} // namespace dov417
