// A slave that nobody here wrote: Qt SerialBus' RTU server, station 1, with known contents.
#include <QCoreApplication>
#include <QModbusRtuSerialSlave>
#include <QVariant>
#include <cstdio>

namespace {

constexpr int station = 1;
constexpr quint16 coils = 6144;
constexpr quint16 registers = 5280;

bool fill(QModbusServer& slave)
{
    QModbusDataUnitMap memory;
    memory.insert(QModbusDataUnit::Coils, {QModbusDataUnit::Coils, 0, coils});
    memory.insert(QModbusDataUnit::HoldingRegisters,
                  {QModbusDataUnit::HoldingRegisters, 0, registers});
    if (!slave.setMap(memory))
        return false;
    for (quint16 address = 0; address < coils; ++address)
        if (!slave.setData(QModbusDataUnit::Coils, address, address % (2 + station) == 0))
            return false;
    for (quint16 address = 0; address < registers; ++address)
        if (!slave.setData(QModbusDataUnit::HoldingRegisters, address,
                           static_cast<quint16>(address * 7 + station)))
            return false;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const QCoreApplication application(argc, argv);
    QModbusRtuSerialSlave slave;
    slave.setConnectionParameter(QModbusDevice::SerialPortNameParameter,
                                 QString::fromLocal8Bit(argv[1]));
    slave.setConnectionParameter(QModbusDevice::SerialParityParameter, 0);
    slave.setConnectionParameter(QModbusDevice::SerialBaudRateParameter, 38400);
    slave.setServerAddress(station);
    if (!fill(slave) || !slave.connectDevice()) {
        std::fprintf(stderr, "%s\n", qPrintable(slave.errorString()));
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
