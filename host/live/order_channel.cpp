#include "live/order_channel.h"

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace dov417 {

OrderChannel::OrderChannel(int descriptor, std::function<void(const std::string&)> came)
    : descriptor_(descriptor), came_(std::move(came)), notifier_(descriptor, QSocketNotifier::Read)
{
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this]() { read(); });
}

OrderChannel::~OrderChannel()
{
    notifier_.setEnabled(false);
    close(descriptor_);
}

bool OrderChannel::say(const std::string& line)
{
    const std::string text = line + '\n';
    // A side that is gone must not end the program with a signal.
    return send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
           static_cast<ssize_t>(text.size());
}

void OrderChannel::read()
{
    char bytes[4096];
    const ssize_t count = recv(descriptor_, bytes, sizeof bytes, MSG_DONTWAIT);
    if (count > 0)
        take(std::string(bytes, static_cast<std::size_t>(count)));
    else if (count == 0 || (errno != EAGAIN && errno != EINTR))
        notifier_.setEnabled(false); // the other side is gone
}

void OrderChannel::take(const std::string& bytes)
{
    for (const char byte : bytes)
        if (byte == '\n')
            came_(std::exchange(begun_, std::string()));
        else if (begun_.size() < maxLine)
            begun_.push_back(byte);
}

} // namespace dov417
