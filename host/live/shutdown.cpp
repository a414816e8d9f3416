#include "live/shutdown.h"

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace dov417 {

namespace {

constexpr std::array<int, 4> signalNumbers = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
std::array<int, 2> channel = {-1, -1}; // a handler may do no more than write a byte

std::atomic<void (*)()> lastWords{nullptr};

void die(int number)
{
    if (void (*const words)() = lastWords)
        words();
    raise(number); // its handler has been taken away
}

void handle(int number)
{
    const int error = errno;
    const char byte = static_cast<char>(number);
    if (write(channel[1], &byte, 1) < 0) {
        // The channel is full of unheard requests; there is nobody to tell.
    }
    if (number != SIGHUP && lastWords) {
        struct sigaction action = {};
        action.sa_handler = die;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(number, &action, nullptr);
    }
    errno = error;
}

// What the caller has ignored, as nohup does, stays ignored.
void install(void (*handler)(int))
{
    for (const int number : signalNumbers) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags =
            static_cast<int>(number == SIGHUP ? SA_RESTART : SA_RESTART | SA_RESETHAND);
        struct sigaction before = {};
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

} // namespace

Shutdown::Shutdown(std::function<void()> asked) : asked_(std::move(asked))
{
    if (pipe2(channel.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    notifier_ = std::make_unique<QSocketNotifier>(channel[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this]() {
        unsigned char byte = 0;
        if (read(channel[0], &byte, 1) != 1)
            return;
        install(handle);
        signalNumber_ = byte;
        const bool isHangUp = byte == SIGHUP;
        if (!isHangUp || !hasHungUp_)
            asked_();
        hasHungUp_ = hasHungUp_ || isHangUp;
    });
    install(handle);
}

Shutdown::~Shutdown()
{
    install(SIG_DFL);
    notifier_.reset();
    close(channel[0]);
    close(channel[1]);
}

void Shutdown::setLastWords(void (*words)())
{
    lastWords = words;
}

} // namespace dov417
