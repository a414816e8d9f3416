// A master that nobody here wrote reads and writes the controller over its pseudo-terminal.
#include <QObject>
#include <QThread>
#include <gtest/gtest.h>
#include <memory>
#include <modbus/modbus.h>

#include "simulator/simulation.h"
#include "support.h"

namespace dov417::simulator {
namespace {

// libmodbus blocks, so the controller has a thread for itself.
class ServedLine {
public:
    explicit ServedLine(const SimulationOptions& options) : simulation_(new Simulation(options))
    {
        thread_.start();
        inServer_.moveToThread(&thread_);
        simulation_->moveToThread(&thread_);
        inServer([this]() { EXPECT_EQ(complaint([this]() { simulation_->start(); }), ""); });
    }
    ~ServedLine()
    {
        inServer([this]() { delete simulation_; });
        thread_.quit();
        thread_.wait();
    }
    ServedLine(const ServedLine&) = delete;
    ServedLine& operator=(const ServedLine&) = delete;

    // Runs there and waits for it.
    template <typename Action>
    void inServer(Action action)
    {
        QMetaObject::invokeMethod(&inServer_, action, Qt::BlockingQueuedConnection);
    }
    std::uint16_t word(int station, Area area, int number)
    {
        std::uint16_t value = 0;
        inServer([&]() { value = simulation_->memory().station(station)->word(area, number); });
        return value;
    }
    void setWord(int station, Area area, int number, std::uint16_t value)
    {
        inServer([&]() { simulation_->memory().station(station)->setWord(area, number, value); });
    }
    std::string port()
    {
        std::string name;
        inServer([&]() { name = simulation_->portName(); });
        return name;
    }

private:
    QThread thread_;
    QObject inServer_;
    Simulation* simulation_;
};

class Libmodbus : public testing::Test {
protected:
    Libmodbus()
    {
        options.stations = {1, 2, 17};
        options.frozen = true;
    }
    ~Libmodbus() override
    {
        if (master) {
            modbus_close(master);
            modbus_free(master);
        }
    }
    void start()
    {
        line = std::make_unique<ServedLine>(options);
        connect();
    }
    void connect()
    {
        master = modbus_new_rtu(line->port().c_str(), 38400, 'E', 8, 1);
        ASSERT_NE(master, nullptr);
        modbus_set_slave(master, 1);
        modbus_set_response_timeout(master, 20, 0);
        ASSERT_EQ(modbus_connect(master), 0) << modbus_strerror(errno);
    }
    void reconnect()
    {
        modbus_close(master);
        modbus_free(master);
        master = nullptr;
        connect();
    }

    SimulationOptions options;
    std::unique_ptr<ServedLine> line;
    modbus_t* master = nullptr;
};

TEST_F(Libmodbus, ReadsRegistersOfRTAndC)
{
    start();
    line->setWord(1, Area::R, 0, 0x1234);
    line->setWord(1, Area::R, 3999, 0xBEEF);
    line->setWord(1, Area::T, 127, 100);
    line->setWord(1, Area::C, 0, 200);
    std::uint16_t values[125] = {};
    ASSERT_EQ(modbus_read_registers(master, 1280, 125, values), 125) << modbus_strerror(errno);
    EXPECT_EQ(values[0], 0x1234);
    ASSERT_EQ(modbus_read_registers(master, 5279, 1, values), 1);
    EXPECT_EQ(values[0], 0xBEEF);
    ASSERT_EQ(modbus_read_registers(master, 511, 2, values), 2);
    EXPECT_EQ(values[0], 100);
    EXPECT_EQ(values[1], 200);
}

TEST_F(Libmodbus, ReadsCoilsOfIQAndM)
{
    start();
    line->setWord(1, Area::I, 0, 0x0001);
    line->setWord(1, Area::Q, 1, 0x8000);
    line->setWord(1, Area::M, 127, 0xC000);
    std::uint8_t coils[2000] = {};
    ASSERT_EQ(modbus_read_bits(master, 0, 2000, coils), 2000) << modbus_strerror(errno);
    EXPECT_EQ(coils[0], 1);
    EXPECT_EQ(coils[1], 0);
    ASSERT_EQ(modbus_read_bits(master, 2048, 33, coils), 33);
    EXPECT_EQ(coils[30], 0);
    EXPECT_EQ(coils[31], 1);
    EXPECT_EQ(coils[32], 0);
    ASSERT_EQ(modbus_read_bits(master, 6141, 3, coils), 3);
    EXPECT_EQ(coils[0], 0);
    EXPECT_EQ(coils[1], 1);
    EXPECT_EQ(coils[2], 1);
}

TEST_F(Libmodbus, WritesSingleCoilsAndRegisters)
{
    start();
    ASSERT_EQ(modbus_write_bit(master, 4096 + 21, 1), 1) << modbus_strerror(errno);
    EXPECT_EQ(line->word(1, Area::M, 1), 0x0020);
    ASSERT_EQ(modbus_write_bit(master, 4096 + 21, 0), 1);
    EXPECT_EQ(line->word(1, Area::M, 1), 0);
    ASSERT_EQ(modbus_write_register(master, 1280 + 100, 0xABCD), 1);
    EXPECT_EQ(line->word(1, Area::R, 100), 0xABCD);
}

TEST_F(Libmodbus, WritesRunsOfCoilsAndRegisters)
{
    start();
    std::uint8_t coils[1968];
    for (int i = 0; i < 1968; ++i)
        coils[i] = i % 3 == 0 ? 1 : 0;
    ASSERT_EQ(modbus_write_bits(master, 2048, 1968, coils), 1968) << modbus_strerror(errno);
    EXPECT_EQ(line->word(1, Area::Q, 0), 0x9249);
    EXPECT_EQ(line->word(1, Area::Q, 1), 0x4924);
    EXPECT_EQ(line->word(1, Area::Q, 122), 0x2492); // from its coil 1952 on, 1953 is the first
    EXPECT_EQ(line->word(1, Area::Q, 123), 0);

    std::uint16_t values[123];
    for (int i = 0; i < 123; ++i)
        values[i] = static_cast<std::uint16_t>(0xF000 + i);
    ASSERT_EQ(modbus_write_registers(master, 1290, 123, values), 123);
    EXPECT_EQ(line->word(1, Area::R, 10), 0xF000);
    EXPECT_EQ(line->word(1, Area::R, 132), 0xF07A);
    EXPECT_EQ(line->word(1, Area::R, 133), 0);
}

TEST_F(Libmodbus, TalksToSeveralStations)
{
    start();
    for (int station : {1, 2, 17}) {
        modbus_set_slave(master, station);
        ASSERT_EQ(modbus_write_register(master, 1280, static_cast<std::uint16_t>(station * 100)), 1)
            << modbus_strerror(errno);
    }
    for (int station : {17, 2, 1}) {
        std::uint16_t value = 0;
        modbus_set_slave(master, station);
        ASSERT_EQ(modbus_read_registers(master, 1280, 1, &value), 1);
        EXPECT_EQ(value, station * 100);
    }
}

TEST_F(Libmodbus, HearsNothingFromAStationThatIsNotThere)
{
    start();
    modbus_set_response_timeout(master, 0, 50000);
    modbus_set_slave(master, 3);
    std::uint16_t value = 0;
    EXPECT_EQ(modbus_read_registers(master, 1280, 1, &value), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST_F(Libmodbus, GetsTheExceptionsByName)
{
    start();
    std::uint16_t value = 0;
    std::uint8_t coil = 0;
    EXPECT_EQ(modbus_read_input_bits(master, 0, 1, &coil), -1);
    EXPECT_EQ(errno, EMBXILFUN);
    EXPECT_EQ(modbus_read_input_registers(master, 0, 1, &value), -1);
    EXPECT_EQ(errno, EMBXILFUN);
    EXPECT_EQ(modbus_read_registers(master, 640, 1, &value), -1);
    EXPECT_EQ(errno, EMBXILADD);
    EXPECT_EQ(modbus_write_bit(master, 6144, 1), -1);
    EXPECT_EQ(errno, EMBXILADD);
    EXPECT_EQ(modbus_read_registers(master, 1280, 0, &value), -1);
    EXPECT_EQ(errno, EMBXILVAL);
    // and goes on
    EXPECT_EQ(modbus_read_registers(master, 1280, 1, &value), 1) << modbus_strerror(errno);
}

TEST_F(Libmodbus, BroadcastsToAllStations)
{
    start();
    std::uint8_t broadcast[] = {0, 6, 0x05, 0x0C, 0, 7};
    ASSERT_EQ(modbus_send_raw_request(master, broadcast, sizeof broadcast), 8);
    std::uint16_t value = 0;
    for (int station : {1, 2, 17}) {
        modbus_set_slave(master, station);
        ASSERT_EQ(modbus_read_registers(master, 1292, 1, &value), 1) << modbus_strerror(errno);
        EXPECT_EQ(value, 7);
    }
}

TEST_F(Libmodbus, ComesAndGoesAsItLikes)
{
    start();
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(modbus_write_register(master, 1280, static_cast<std::uint16_t>(i)), 1)
            << modbus_strerror(errno);
        reconnect();
        std::uint16_t value = 99;
        ASSERT_EQ(modbus_read_registers(master, 1280, 1, &value), 1) << modbus_strerror(errno);
        EXPECT_EQ(value, i);
    }
}

TEST_F(Libmodbus, GetsAlongWithAPacedLine)
{
    options.baudLimit = true;
    options.line.baudRate = 115200;
    start();
    std::uint16_t values[125] = {};
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(modbus_read_registers(master, 1280, 125, values), 125) << modbus_strerror(errno);
}

TEST_F(Libmodbus, NoticesEveryFlippedBit)
{
    options.faults = {"flip=every:3"};
    start();
    modbus_set_response_timeout(master, 0, 20000); // a flipped byte count lets it wait for more
    modbus_set_error_recovery(master, MODBUS_ERROR_RECOVERY_PROTOCOL);
    line->setWord(1, Area::R, 5, 0x5555);
    int good = 0;
    int bad = 0;
    for (int i = 0; i < 60; ++i) {
        std::uint16_t value = 0;
        if (modbus_read_registers(master, 1285, 1, &value) == 1) {
            EXPECT_EQ(value, 0x5555);
            ++good;
        } else {
            ++bad;
        }
    }
    EXPECT_EQ(good + bad, 60);
    EXPECT_GE(bad, 20);
    EXPECT_GT(good, 0);
}

} // namespace
} // namespace dov417::simulator
