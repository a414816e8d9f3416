#include "session/write_job.h"

#include <utility>

namespace dov417 {

WriteJob::WriteJob(const Library& library, Session& session, int gap, std::function<void()> done)
    : library_(library), session_(session), gap_(gap), done_(std::move(done)),
      reads_(session, gap, [this]() { (this->*afterReads_)(); })
{
}

const std::vector<WriteTask>& WriteJob::tasks() const
{
    return tasks_;
}

void WriteJob::start(const std::vector<WriteTask>& tasks)
{
    tasks_ = tasks;
    afterReads_ = &WriteJob::write;
    read();
}

// The tasks that can be read and have not failed.
void WriteJob::read()
{
    reading_.clear();
    std::vector<Address> addresses;
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
        if (tasks_.at(i).item.address.station == 0 || tasks_.at(i).result != WriteResult::waiting)
            continue;
        reading_.push_back(i);
        addresses.push_back(tasks_.at(i).item.address);
    }
    reads_.start(addresses);
}

void WriteJob::write()
{
    for (std::size_t i = 0; i < reading_.size(); ++i)
        if (reads_.problem(i).empty())
            tasks_.at(reading_.at(i)).before =
                cachedBytes(library_, tasks_.at(reading_.at(i)).item.address);
    for (std::size_t i = 0; i < tasks_.size(); ++i)
        for (const Write& piece : writePieces(tasks_.at(i).item.address, tasks_.at(i).data, gap_))
            writing_.emplace(session_.write(piece), i);
}

void WriteJob::written(int number, bool accepted, const std::string& reason)
{
    const auto found = writing_.find(number);
    if (found == writing_.end())
        return;
    WriteTask& task = tasks_.at(found->second);
    if (!accepted) {
        task.result = WriteResult::refused;
        task.reason = reason;
    }
    writing_.erase(found);
    if (!writing_.empty())
        return;
    for (WriteTask& each : tasks_)
        if (each.item.address.station == 0 && each.result == WriteResult::waiting)
            each.result = WriteResult::sent;
    afterReads_ = &WriteJob::compare;
    read();
}

void WriteJob::readOnce(int number, bool accepted, const std::string& reason)
{
    reads_.settle(number, accepted, reason);
}

void WriteJob::compare()
{
    for (std::size_t i = 0; i < reading_.size(); ++i) {
        WriteTask& task = tasks_.at(reading_.at(i));
        if (!reads_.problem(i).empty()) {
            task.result = WriteResult::unread;
            task.reason = reads_.problem(i);
            continue;
        }
        task.after = cachedBytes(library_, task.item.address);
        task.result = task.after == task.data ? WriteResult::confirmed : WriteResult::different;
    }
    done_();
}

} // namespace dov417
