#include "session/single_request.h"

#include <gtest/gtest.h>

#include "exchange.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

class ARequestOnALineOfItsOwn : public ::testing::Test {
protected:
    ARequestOnALineOfItsOwn()
    {
        settings.device = slave.port();
        settings.isShared = false;
        settings.timeout = std::chrono::minutes(10);
    }

    // Until it has ended and the line is quiet.
    void send()
    {
        LineObserver observer;
        observer.sent = [](const Transmission&) {};
        observer.markerEnded = [](const Transmission&) {};
        observer.stray = [](const Stray&) {};
        observer.notice = [](const std::string&) {};
        observer.doubt = []() {};
        observer.port = [this](bool, const QString& message) {
            messages.push_back(message.toStdString());
        };
        request = std::make_unique<SingleRequest>(hex(readRequest), settings, observer,
                                                  [this]() { ++done; });
        request->told = [this](const Transmission& transmission) {
            EXPECT_EQ(done, 0);
            told.push_back(transmission);
        };
        request->start();
        ASSERT_TRUE(waitUntil([this]() { return done > 0; }));
        EXPECT_EQ(done, 1);
    }

    PtySlave slave;
    LineSettings settings;
    std::unique_ptr<SingleRequest> request;
    std::vector<std::string> messages;
    std::vector<Transmission> told;
    int done = 0;
};

TEST_F(ARequestOnALineOfItsOwn, IsToldWithItsReply)
{
    slave.arrived = [this](const QByteArray&) { slave.send(hex(readReply)); };
    send();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.front().reception.result, LineResult::reply);
    EXPECT_EQ(told.front().reception.bytes.toHex(), hex(readReply).toHex());
    ASSERT_TRUE(request->ended().has_value());
    EXPECT_EQ(request->ended()->reception.bytes, told.front().reception.bytes);
}

TEST_F(ARequestOnALineOfItsOwn, IsToldWithoutOne)
{
    settings.timeout = std::chrono::milliseconds(20);
    send();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.front().reception.result, LineResult::timeout);
    EXPECT_TRUE(request->ended().has_value());
}

// Whether the controller has taken it, nobody knows.
TEST_F(ARequestOnALineOfItsOwn, HasNoEndWhereThePortGoes)
{
    slave.arrived = [this](const QByteArray&) { slave.unplug(); };
    send();
    EXPECT_TRUE(told.empty());
    EXPECT_FALSE(request->ended().has_value());
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages.back(), "port " + settings.device.toStdString() + " is gone");
}

} // namespace

} // namespace dov417
