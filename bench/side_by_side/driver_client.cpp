// This driver through its exported calls: one poll a transaction, all values watched.
#include <QDebug>
#include <QVector>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

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

// Answers from memory, or over the pseudo-terminal as a small blocking host would.
class Slave {
public:
    explicit Slave(const Job& job) : job_(job)
    {
        for (int turn = 0; turn < 2; ++turn) {
            replies_[turn] =
                bytesOf(job.write ? writeEcho(job.registers) : readReply(job.registers, turn));
        }
        if (job.line) {
            line_ = open(startSlave(job).c_str(), O_RDWR | O_NOCTTY);
        }
    }

    QByteArray& answer(const FRAME_PRO& frame)
    {
        turn_ ^= job_.changing ? 1 : 0;
        return line_ < 0 ? replies_[turn_] : overLine(frame);
    }

private:
    QByteArray& overLine(const FRAME_PRO& frame)
    {
        if (write(line_, frame.frame, static_cast<size_t>(frame.sendLength)) != frame.sendLength) {
            std::abort();
        }
        received_.resize(frame.replyLength);
        int have = 0;
        while (have < frame.replyLength) {
            pollfd waiting = {line_, POLLIN, 0};
            const ssize_t got = ::poll(&waiting, 1, 10000) == 1
                                    ? read(line_, received_.data() + have,
                                           static_cast<size_t>(frame.replyLength - have))
                                    : -1;
            if (got <= 0) {
                std::abort();
            }
            have += static_cast<int>(got);
        }
        return received_;
    }

    Job job_;
    QByteArray replies_[2];
    QByteArray received_;
    int line_ = -1;
    int turn_ = 0;
};

void poll(Slave& slave)
{
    static FRAME_PRO frame;
    static QString errorText;
    while (intf_getSendFrame(&frame) == 0) {
        // after ten writes in a row it is a cyclic read's turn, and there is none
    }
    if (intf_dealRcvFrame(&slave.answer(frame), &errorText) != replyAccepted) {
        std::abort();
    }
}

} // namespace

int main(int argc, char** argv)
{
    const Job job = jobOf(argc, argv);
    qInstallMessageHandler(silence);
    intf_setAddrValueChangeCallBack(countChange);
    intf_initProperty(nullptr, 0, nullptr, nullptr, "0#0#0#3#128", nullptr);

    const QString words = QString::fromLatin1("R_W");
    Slave slave(job);
    if (job.write) {
        unsigned char values[256] = {0x34, 0x12};
        measure(job, [&] {
            intf_setData(1, words, 0, job.registers, values, 0);
            poll(slave);
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
    measure(job, [&] { poll(slave); });
    return job.changing && announced == 0 ? 1 : 0;
}
