// Qt SerialBus' RTU client: one request object a transaction, finished in an event loop.
#include <QCoreApplication>
#include <QEventLoop>
#include <QModbusDataUnit>
#include <QModbusReply>
#include <QModbusRtuSerialMaster>
#include <QVariant>
#include <cstdlib>
#include <iostream>

#include "measured.h"

namespace {

// The values of the reply.
QVector<quint16> finish(QModbusReply* reply)
{
    if (reply == nullptr) {
        std::abort();
    }
    QEventLoop loop;
    QObject::connect(reply, &QModbusReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished()) {
        loop.exec();
    }
    if (reply->error() != QModbusDevice::NoError) {
        std::cerr << "Qt SerialBus: " << qPrintable(reply->errorString()) << '\n';
        std::exit(1);
    }
    const QVector<quint16> values = reply->result().values();
    delete reply;
    return values;
}

} // namespace

int main(int argc, char** argv)
{
    const Job job = jobOf(argc, argv);
    const std::string path = startSlave(job);
    QCoreApplication app(argc, argv);
    QModbusRtuSerialMaster master;
    master.setConnectionParameter(QModbusDevice::SerialPortNameParameter,
                                  QString::fromStdString(path));
    master.setConnectionParameter(QModbusDevice::SerialParityParameter, 0);
    master.setConnectionParameter(QModbusDevice::SerialBaudRateParameter, 38400);
    master.setTimeout(10000);
    if (!master.connectDevice()) {
        std::cerr << "Qt SerialBus: " << qPrintable(master.errorString()) << '\n';
        return 1;
    }
    const std::vector<Request> requests = requestsOf(job);
    quint16 written = 0x1234;
    QVector<quint16> values;
    const bool writes = job.is("write");
    measure(job, [&] {
        if (writes) {
            QModbusDataUnit unit(QModbusDataUnit::HoldingRegisters, 0x500,
                                 QVector<quint16>(job.size, ++written));
            finish(master.sendWriteRequest(unit, 1));
            return;
        }
        for (const Request& each : requests) {
            const auto type =
                each.function == 1 ? QModbusDataUnit::Coils : QModbusDataUnit::HoldingRegisters;
            const QModbusDataUnit unit(type, each.first, static_cast<quint16>(each.count));
            values = finish(master.sendReadRequest(unit, 1));
        }
    });
    return 0;
}
