#include "session/tellings.h"

#include <utility>

namespace dov417 {

void Tellings::add(Telling telling)
{
    if (waiting_.empty() && !telling_)
        QMetaObject::invokeMethod(
            this, [this]() { tell(); }, Qt::QueuedConnection);
    waiting_.push_back(std::move(telling));
}

void Tellings::tell()
{
    if (telling_)
        return;
    telling_ = true;
    while (!waiting_.empty()) {
        const Telling next = std::move(waiting_.front());
        waiting_.pop_front();
        next();
    }
    telling_ = false;
}

} // namespace dov417
