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
    const quint16 registers = static_cast<quint16>(job.registers);
    QModbusDataUnit unit(QModbusDataUnit::HoldingRegisters, 0x500, registers);
    measure(job, [&] {
        QModbusReply* reply =
            job.write ? master.sendWriteRequest(unit, 1) : master.sendReadRequest(unit, 1);
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
        delete reply;
    });
    return 0;
}
