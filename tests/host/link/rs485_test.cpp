#include "link/rs485.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

namespace dov417 {

namespace {

// A driver that stands in for the kernel's.
struct DriverOfAPort {
    serial_rs485 state = serial_rs485();
    int errorOfReading = 0;
    int errorOfSetting = 0;
    unsigned maxDelay = 100;
    bool isDeaf = false; // takes everything, and does nothing
    int handle = -1;

    PortControl control()
    {
        return [this](int port, unsigned long request, void* argument) {
            auto* const asked = static_cast<serial_rs485*>(argument);
            handle = port;
            errno = request == TIOCSRS485 ? errorOfSetting : errorOfReading;
            if (errno != 0)
                return -1;
            if (request == TIOCGRS485)
                *asked = state;
            else if (request == TIOCSRS485 && !isDeaf)
                take(*asked);
            return 0;
        };
    }
    void take(const serial_rs485& asked)
    {
        state = asked;
        state.delay_rts_before_send = std::min(state.delay_rts_before_send, maxDelay);
        state.delay_rts_after_send = std::min(state.delay_rts_after_send, maxDelay);
    }

    std::string refusal(const Rs485& wish)
    {
        QString reason;
        return driveDirection(7, QStringLiteral("/dev/ttyS1"), wish, &reason, control())
                   ? std::string()
                   : reason.toStdString();
    }
};

const std::string withoutDirection =
    "the driver of port /dev/ttyS1 drives no direction: --rs485 is for ports that do; most "
    "adapters drive it by themselves, and need no option";

TEST(Rs485, IsTurnedOnWithItsDelays)
{
    DriverOfAPort driver;
    EXPECT_EQ(driver.refusal({true, 3, 5}), "");
    EXPECT_EQ(driver.handle, 7);
    EXPECT_EQ(driver.state.flags, unsigned(SER_RS485_ENABLED | SER_RS485_RTS_ON_SEND));
    EXPECT_EQ(driver.state.delay_rts_before_send, 3U);
    EXPECT_EQ(driver.state.delay_rts_after_send, 5U);
}

TEST(Rs485, LeavesWhatTheSystemKnowsOfTheBoard)
{
    DriverOfAPort driver;
    driver.state.flags =
        SER_RS485_RTS_AFTER_SEND | SER_RS485_TERMINATE_BUS | SER_RS485_RX_DURING_TX;
    EXPECT_EQ(driver.refusal({true, 0, 0}), "");
    EXPECT_EQ(driver.state.flags,
              unsigned(SER_RS485_ENABLED | SER_RS485_RTS_AFTER_SEND | SER_RS485_TERMINATE_BUS))
        << "but for hearing oneself";
    driver.state.flags = SER_RS485_RTS_ON_SEND | SER_RS485_RTS_AFTER_SEND;
    EXPECT_EQ(driver.refusal({true, 0, 0}), "");
    EXPECT_EQ(driver.state.flags, unsigned(SER_RS485_ENABLED | SER_RS485_RTS_ON_SEND))
        << "a level that says nothing";
}

TEST(Rs485, IsRefusedInWordsWhereTheDriverHasNone)
{
    for (const int error : {ENOTTY, EINVAL, EOPNOTSUPP}) {
        DriverOfAPort reading;
        reading.errorOfReading = error;
        EXPECT_EQ(reading.refusal({true, 0, 0}), withoutDirection) << error;
        DriverOfAPort setting;
        setting.errorOfSetting = error;
        EXPECT_EQ(setting.refusal({true, 0, 0}), withoutDirection) << error;
    }
    DriverOfAPort deaf;
    deaf.isDeaf = true;
    EXPECT_EQ(deaf.refusal({true, 0, 0}), withoutDirection);
    DriverOfAPort forbidden;
    forbidden.errorOfSetting = EPERM;
    EXPECT_EQ(forbidden.refusal({true, 0, 0}), "the driver of port /dev/ttyS1 does not take the "
                                               "direction over: Operation not permitted");
}

TEST(Rs485, IsRefusedWhereTheDriverMakesOtherDelaysOfThem)
{
    DriverOfAPort driver;
    driver.maxDelay = 10;
    EXPECT_EQ(driver.refusal({true, 10, 10}), "");
    EXPECT_EQ(driver.refusal({true, 4, 20}),
              "the driver of port /dev/ttyS1 does not keep the delays of --rs485: it makes 4 ms "
              "before and 10 ms after a frame of 4 ms before and 20 ms after a frame");
}

} // namespace

} // namespace dov417
