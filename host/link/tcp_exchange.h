// Modbus TCP: the driver's frame without its CRC behind a header with a number.
//
// The number comes back with the reply. So a late one is known for what it is, whatever it looks
// like, and is thrown away; no marker is needed, and nothing that came before is ever in doubt. The
// driver, which knows RTU alone, gets the reply with a CRC made anew.
//
// The station is the unit of the header: a gateway hands the request on to the one of that number.
#ifndef DOV417_LINK_TCP_EXCHANGE_H
#define DOV417_LINK_TCP_EXCHANGE_H

#include <QByteArray>
#include <deque>
#include <map>

#include "link/line_protocol.h"
#include "link/reply_collector.h"

namespace dov417 {

class TcpExchange : public LineProtocol {
public:
    explicit TcpExchange(const ExchangeLine& line);

    void start(const ExchangeSettings& settings, Clock::time_point now) override;
    void stop() override;
    bool isRunning() const override;
    bool wasSound() const override;
    void transact(const Transmission& request, Done done, Clock::time_point now) override;
    void bytesCame(const QByteArray& bytes, Clock::time_point now) override;
    void timerDue(Clock::time_point now) override;
    const Books& books() const override;
    void awaitLate(const Books& earlier) override;
    void sendNoMore() override;
    Clock::time_point quietAt() const override;
    std::vector<StationTime> stationTimes() const override;
    Micros wireTime() const override;

private:
    enum class State {
        stopped,
        idle,
        listening, // to a station that is late, before anything is sent to it
        awaitingReply,
        awaitingTurnaround
    };

    struct Station {
        StationTimeout timeout;
        Clock::time_point listenUntil{};
        bool isNamed = false; // as slow
    };

    // Sent, and given up before its reply came.
    struct Late {
        int mark = 0;
        long long number = 0;
        unsigned char station = 0;
        Clock::time_point sentAt{};
    };

    Station& station();
    void next(Clock::time_point now);
    void transmit(Clock::time_point now);
    void frameCame(int mark, const QByteArray& frame, Clock::time_point now);
    void lateCame(int mark, const QByteArray& frame, Clock::time_point now);
    void answered(unsigned char station, Micros delay, Clock::time_point now);
    void takeReply(const QByteArray& frame, Clock::time_point now);
    void deadlinePassed(Clock::time_point now);
    void finish(LineResult result);
    void report(const Stray& stray);

    ExchangeLine line_;
    ExchangeSettings settings_;
    ReplyCollector collector_{false};
    Books books_; // stays empty: nothing that is out can be mistaken by whoever comes next
    std::map<unsigned char, Station> stations_; // that were asked
    State state_ = State::stopped;
    bool sendsNoMore_ = false;
    Transmission current_;
    Done done_;
    int mark_ = 0; // of the frame that went out last
    long long transmissions_ = 0;
    Clock::time_point lastActivity_{}; // of theirs
    Clock::time_point deadline_{};
    QByteArray pending_;     // the beginning of a frame
    std::deque<Late> late_;  // oldest first
    bool isAwaited_ = false; // the reply to that frame
    bool hasHeard_ = false;  // a reply, since the start
    Astray astray_;
};

} // namespace dov417

#endif
