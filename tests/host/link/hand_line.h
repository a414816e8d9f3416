// An exchange whose line and time are in the hands of the test.
#ifndef DOV417_TESTS_HAND_LINE_H
#define DOV417_TESTS_HAND_LINE_H

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "line/crc16.h"
#include "link/exchange.h"

namespace dov417 {

// One register of station 1; heads of frames.
inline constexpr const char* readOf100 = "010300640001";
inline constexpr const char* readOf200 = "010300C80001";
inline constexpr const char* writeOf5 = "010600050007";

class HandLine {
public:
    HandLine()
    {
        ExchangeLine line;
        line.write = [this](const QByteArray& bytes) { sent.push_back(bytes); };
        line.bytesWait = [this]() { return bytesWait; };
        line.wakeAt = [this](Clock::time_point when) { wake_ = when; };
        line.sleep = [this]() { wake_ = Clock::time_point::max(); };
        line.sent = [](const Transmission&) {};
        line.markerEnded = [this](const Transmission& marker) { ends(marker); };
        line.stray = [this](const Stray& stray) { strays.push_back(stray); };
        line.notice = [this](const std::string& text) { notices.push_back(text); };
        line.doubt = [this]() { ++doubts; };
        exchange = std::make_unique<Exchange>(line);
        settings.timeout.initial = std::chrono::milliseconds(500);
        settings.timeout.max = std::chrono::seconds(15);
        settings.turnaround = std::chrono::milliseconds(100);
        settings.replyGap = std::chrono::milliseconds(100);
        settings.horizon = std::chrono::seconds(30);
        settings.isShared = false;
    }

    void start()
    {
        exchange->start(settings, now);
        pass(std::chrono::milliseconds(10)); // the line has been silent
    }

    // The request in hex, without its CRC; it goes out at once.
    void ask(const char* request, int replyLength)
    {
        Transmission transmission;
        transmission.sent = withCrc(QByteArray::fromHex(request));
        transmission.replyLength = replyLength;
        transmission.request.length = words_;
        ended.reset();
        exchange->transact(
            transmission, [this](const Transmission& each) { ended = each; }, now);
        pass(std::chrono::milliseconds(0));
    }

    // The same of so many registers, which a marker may be made of.
    void askRead(const char* request, int words)
    {
        words_ = words;
        ask(request, 5 + 2 * words);
        words_ = 0;
    }

    // So much time goes by, with nothing on the line.
    void pass(Clock::duration time)
    {
        const Clock::time_point until = now + time;
        for (int rounds = 0; wake_ <= until; rounds = wake_ > now ? 0 : rounds + 1) {
            if (rounds == maxRounds) {
                ADD_FAILURE() << "it is woken again and again";
                wake_ = Clock::time_point::max();
                break;
            }
            now = std::max(now, wake_);
            wake_ = Clock::time_point::max();
            exchange->timerDue(now);
        }
        now = until;
    }

    // Bytes in hex.
    void come(const char* bytes)
    {
        exchange->bytesCame(QByteArray::fromHex(bytes), now);
    }
    // A frame without its CRC.
    void comeWhole(const char* frame)
    {
        exchange->bytesCame(withCrc(QByteArray::fromHex(frame)), now);
    }

    std::string reason() const
    {
        return ended ? reasonText(ended->reception, ended->replyLength) : "under way";
    }

    ExchangeSettings settings;
    std::unique_ptr<Exchange> exchange;
    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
    std::vector<QByteArray> sent;
    std::vector<Stray> strays;
    std::vector<std::string> notices;
    int doubts = 0;
    bool bytesWait = false; // at the port, not handed on yet
    std::optional<Transmission> ended;
    std::function<void(const Transmission&)> ends = [](const Transmission&) {}; // a marker

private:
    static constexpr int maxRounds = 1000; // at one time

    int words_ = 0;
    Clock::time_point wake_ = Clock::time_point::max();
};

} // namespace dov417

#endif
