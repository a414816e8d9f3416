// A Qt SerialBus client that reads the same requests over and over; it keeps the inter-frame delay
// itself.
#include <QCoreApplication>
#include <QEventLoop>
#include <QModbusDataUnit>
#include <QModbusReply>
#include <QModbusRtuSerialMaster>
#include <QVariant>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cycle.h"

namespace {

[[noreturn]] void die(const QString& why)
{
    std::fprintf(stderr, "Qt SerialBus: %s\n", qPrintable(why));
    std::exit(1);
}

} // namespace

int main(int argc, char** argv)
{
    const Cycle cycle = cycleOf(argc, argv);
    const QCoreApplication app(argc, argv);
    QModbusRtuSerialMaster master;
    master.setConnectionParameter(QModbusDevice::SerialPortNameParameter,
                                  QString::fromLocal8Bit(cycle.port));
    master.setConnectionParameter(QModbusDevice::SerialParityParameter, 0);
    master.setConnectionParameter(QModbusDevice::SerialBaudRateParameter, 38400);
    if (!master.connectDevice())
        die(master.errorString());
    runCycle(cycle, [&](const Request& request) {
        const QModbusDataUnit unit(request.function == 1 ? QModbusDataUnit::Coils
                                                         : QModbusDataUnit::HoldingRegisters,
                                   request.first, static_cast<quint16>(request.count));
        const std::unique_ptr<QModbusReply> reply(master.sendReadRequest(unit, 1));
        if (!reply)
            die(master.errorString());
        QEventLoop loop;
        QObject::connect(reply.get(), &QModbusReply::finished, &loop, &QEventLoop::quit);
        if (!reply->isFinished())
            loop.exec();
        if (reply->error() != QModbusDevice::NoError)
            die(reply->errorString());
    });
    return 0;
}
