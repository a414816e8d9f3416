// This driver through its exported calls: one poll a transaction, all values watched.
#include <QDebug>
#include <QVector>
#include <cstdlib>

#include "intf.h"
#include "measured.h"

namespace {

long announced = 0;

void countChange(int, int, QString&, int)
{
    ++announced;
}

void silence(QtMsgType, const QMessageLogContext&, const QString&) {}

QByteArray bytesOf(const std::vector<unsigned char>& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace

int main(int argc, char** argv)
{
    const Job job = jobOf(argc, argv);
    qInstallMessageHandler(silence);
    intf_setAddrValueChangeCallBack(countChange);
    intf_initProperty(nullptr, 0, nullptr, nullptr, "0#0#0#3#128", nullptr);

    const QString words = QString::fromLatin1("R_W");
    QByteArray replies[2] = {bytesOf(readReply(job.registers, 0)),
                             bytesOf(readReply(job.registers, 1))};
    QByteArray echo = bytesOf(writeEcho(job.registers));
    static FRAME_PRO frame;
    QString errorText;
    if (job.write) {
        unsigned char values[256] = {0x34, 0x12};
        measure(job, [&] {
            intf_setData(1, words, 0, job.registers, values, 0);
            while (intf_getSendFrame(&frame) == 0) {
                // after ten writes in a row it is a cyclic read's turn, and there is none
            }
            if (intf_dealRcvFrame(&echo, &errorText) != replyAccepted) {
                std::abort();
            }
        });
        return 0;
    }
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = 1;
    key.regName = words;
    key.length = job.registers;
    QList<KEY_ADDRESS> keys;
    keys.append(key);
    intf_addrMerge(keys);
    int turn = 0;
    measure(job, [&] {
        turn ^= job.changing ? 1 : 0;
        intf_getSendFrame(&frame);
        if (intf_dealRcvFrame(&replies[turn], &errorText) != replyAccepted) {
            std::abort();
        }
    });
    return job.changing && announced == 0 ? 1 : 0;
}
