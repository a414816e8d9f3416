#include "session/tellings.h"

#include <exception>
#include <utility>

namespace dov417 {

Tellings::Tellings(std::function<void(const std::string&)> threw) : threw_(std::move(threw)) {}

void Tellings::add(Telling telling)
{
    waiting_.push_back(std::move(telling));
    if (isPosted_)
        return;
    isPosted_ = true;
    const auto later = [this]() {
        isPosted_ = false;
        tellWaiting();
    };
    QMetaObject::invokeMethod(this, later, Qt::QueuedConnection);
}

void Tellings::tell()
{
    if (telling_ == 0)
        tellWaiting();
}

// What is added meanwhile has its turn later: a listener that asks again for what was refused must
// not keep the event loop from going round. What one throws must not keep the others from being
// told, for ever if it went on from here, nor reach the event loop, which Qt does not allow.
void Tellings::tellWaiting()
{
    ++telling_;
    for (std::size_t left = waiting_.size(); left > 0 && !waiting_.empty(); --left) {
        const Telling next = std::move(waiting_.front());
        waiting_.pop_front();
        try {
            next();
        } catch (const std::exception& thrown) {
            threw_(thrown.what());
        } catch (...) {
            threw_("no std::exception");
        }
    }
    --telling_;
}

} // namespace dov417
