#include "tool/terminal.h"

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/ioctl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>
#include <utility>

#include "line/failure.h"
#include "live/shutdown.h"

namespace dov417 {

namespace {

// Second screen, no cursor; marks around what is pasted.
constexpr std::string_view enterScreen = "\033[?1049h\033[?25l";
constexpr std::string_view enterKeys = "\033[?2004h";
constexpr std::string_view leaveBoth = "\033[0m\033[?2004l\033[?25h\033[?1049l";
constexpr std::array<int, 5> fatalSignals = {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr std::array<int, 3> toldSignals = {SIGTSTP, SIGCONT, SIGWINCH};

// What signal handlers use. The terminal is one, so these are too.
std::array<int, 2> told = {-1, -1};
std::atomic<bool> isEntered{false};
std::atomic<bool> hasKeysNow{false};
termios settingsFound = {};

// As handlers may: no buffers, no locks.
void putBack()
{
    if (!isEntered.exchange(false))
        return;
    if (hasKeysNow)
        tcsetattr(STDIN_FILENO, TCSANOW, &settingsFound);
    if (write(STDOUT_FILENO, leaveBoth.data(), leaveBoth.size()) < 0) {
        // It is gone; there is nothing to put back.
    }
}

void putBackAndDie(int number)
{
    putBack();
    raise(number); // its handler has been taken away
}

void tellLoop(int number)
{
    const int error = errno;
    const char byte = static_cast<char>(number);
    if (write(told[1], &byte, 1) < 0) {
        // Full of what is not heard yet; one of them is enough.
    }
    errno = error;
}

void handle(int number, void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(number, &action, nullptr);
}

bool isIgnored(int number)
{
    struct sigaction action = {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void enter()
{
    if (hasKeysNow) {
        termios raw = settingsFound;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN);
        raw.c_iflag &= ~static_cast<tcflag_t>(IXON | ICRNL | INLCR); // Ctrl-S stops no polling
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
    isEntered = true;
    Terminal::put(std::string(enterScreen) + std::string(hasKeysNow ? enterKeys : ""));
}

} // namespace

Terminal::Terminal(bool takesKeys, Events events) : events_(std::move(events))
{
    if (takesKeys && tcgetattr(STDIN_FILENO, &settingsFound) != 0)
        throw Failure(std::string("the terminal: ") + std::strerror(errno));
    if (pipe2(told.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    signals_ = std::make_unique<QSocketNotifier>(told[0], QSocketNotifier::Read);
    QObject::connect(signals_.get(), &QSocketNotifier::activated, signals_.get(),
                     [this]() { heard(); });
    if (takesKeys) {
        input_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(input_.get(), &QSocketNotifier::activated, input_.get(),
                         [this]() { read(); });
    }
    for (const int number : fatalSignals)
        handle(number, putBackAndDie, static_cast<int>(SA_RESETHAND));
    for (const int number : toldSignals)
        if (!isIgnored(number))
            handle(number, tellLoop, SA_RESTART);
    Shutdown::setLastWords(putBack);
    hasKeysNow = takesKeys;
    enter();
}

Terminal::~Terminal()
{
    std::fflush(stdout);
    putBack();
    Shutdown::setLastWords(nullptr);
    for (const int number : fatalSignals)
        handle(number, SIG_DFL, 0);
    for (const int number : toldSignals)
        if (!isIgnored(number))
            handle(number, SIG_DFL, 0);
    signals_.reset();
    close(told[0]);
    close(told[1]);
}

bool Terminal::hasKeys()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

void Terminal::put(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

bool Terminal::bytesWait()
{
    int count = 0;
    return ioctl(STDIN_FILENO, FIONREAD, &count) == 0 && count > 0;
}

void Terminal::read()
{
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count > 0) {
        events_.came(std::string(bytes.data(), static_cast<std::size_t>(count)));
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
        input_->setEnabled(false);
        events_.lost();
    }
}

void Terminal::heard()
{
    char number = 0;
    if (::read(told[0], &number, 1) != 1)
        return;
    if (number == SIGTSTP)
        stop();
    else if (number == SIGCONT && isEntered)
        enter(); // the shell has had it meanwhile
    events_.repaint();
}

// Goes on once somebody has called the program back.
void Terminal::stop()
{
    putBack();
    handle(SIGTSTP, SIG_DFL, 0);
    pthread_kill(pthread_self(), SIGTSTP);
    handle(SIGTSTP, tellLoop, SA_RESTART);
    if (hasKeysNow)
        tcgetattr(STDIN_FILENO, &settingsFound);
    enter();
}

} // namespace dov417
