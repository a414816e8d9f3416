// This driver through its exported calls: a transaction is a poll of all that is watched, with or
// without taking the values, a write of watched words, or a plan.
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

// Answers from memory, or over the pseudo-terminal as a small blocking host would.
class Slave {
public:
    explicit Slave(const Job& job) : job_(job)
    {
        if (job.line) {
            line_ = open(startSlave(job).c_str(), O_RDWR | O_NOCTTY);
        }
    }

    // The same requests in every transaction: their answers are made in the first two.
    void beginTransaction()
    {
        turn_ ^= job_.changing ? 1 : 0;
        next_ = 0;
    }

    QByteArray& answer(const FRAME_PRO& frame)
    {
        if (line_ >= 0) {
            return overLine(frame);
        }
        std::vector<QByteArray>& replies = replies_[turn_];
        if (next_ == replies.size()) {
            const auto reply = answerTo(frame.frame, 0x11 * turn_);
            replies.push_back(QByteArray(reinterpret_cast<const char*>(reply.data()),
                                         static_cast<int>(reply.size())));
        }
        return replies[next_++];
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
            const ssize_t got = ::poll(&waiting, 1, 300000) == 1
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
    std::vector<QByteArray> replies_[2];
    size_t next_ = 0;
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

KEY_ADDRESS keyOf(const QString& regName, int address, int length)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = 1;
    key.regName = regName;
    key.address = address;
    key.length = length;
    return key;
}

QList<KEY_ADDRESS> watchedKeys(const Job& job)
{
    QList<KEY_ADDRESS> keys;
    for (const std::string& item : job.items) {
        const std::vector<std::string> parts = partsOf(item);
        keys.append(keyOf(QString::fromLatin1(parts.at(0).c_str()), std::stoi(parts.at(1)),
                          std::stoi(parts.at(2))));
    }
    if (keys.isEmpty()) {
        keys.append(keyOf(QString::fromLatin1("R_W"), 0, job.size));
    }
    return keys;
}

// A screen's worth of every register type, nothing next to each other.
QList<KEY_ADDRESS> scatteredKeys(int count)
{
    const struct {
        const char* name;
        int addresses;
        int length;
    } types[] = {{"R_W", 3990, 1}, {"M_W", 128, 1},    {"I_bit", 2048, 1}, {"R_D", 3990, 2},
                 {"Q_W", 128, 1},  {"R_bit", 3990, 1}, {"T", 128, 1},      {"M_bit", 2048, 1}};
    QList<KEY_ADDRESS> keys;
    unsigned int random = 417;
    for (int i = 0; i < count; ++i) {
        random = random * 1103515245u + 12345u;
        const auto& type = types[(random >> 16) % 8];
        random = random * 1103515245u + 12345u;
        const int address = static_cast<int>((random >> 8) % static_cast<unsigned>(type.addresses));
        keys.append(keyOf(QString::fromLatin1(type.name), address, type.length));
    }
    return keys;
}

void measureWrites(const Job& job, Slave& slave)
{
    driver.readList.clear(); // watched all the same; no cyclic read comes in between
    const QString words = QString::fromLatin1("R_W");
    unsigned char values[256] = {0x34, 0x12};
    measure(job, [&] {
        for (int i = 0; i < job.size; ++i) {
            ++values[2 * i];
        }
        slave.beginTransaction();
        intf_setData(1, words, 0, job.size, values, 0);
        poll(slave);
    });
}

void measurePolls(const Job& job, Slave& slave, const QList<KEY_ADDRESS>& keys)
{
    const int requests = static_cast<int>(driver.readList.size());
    const int taken = job.is("read") ? static_cast<int>(keys.size()) : 0;
    unsigned char values[512];
    measure(job, [&] {
        slave.beginTransaction();
        for (int i = 0; i < requests; ++i) {
            poll(slave);
        }
        for (int i = 0; i < taken; ++i) {
            const KEY_ADDRESS& key = keys.at(i);
            intf_getData(1, key.regName, key.address, key.length, values);
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    const Job job = jobOf(argc, argv);
    qInstallMessageHandler(silence);
    intf_setAddrValueChangeCallBack(countChange);
    intf_initProperty(nullptr, 0, nullptr, nullptr, "0#0#0#3#128", nullptr);
    if (job.is("plan")) {
        QList<KEY_ADDRESS> keys = scatteredKeys(job.size);
        measure(job, [&] { intf_addrMerge(keys); });
        return 0;
    }
    if (!job.items.empty()) { // as `dov417 watch` merges by itself
        intf_initProperty(nullptr, 0, nullptr, nullptr, "0#0#0#3#12", nullptr);
    }
    QList<KEY_ADDRESS> keys = watchedKeys(job);
    intf_addrMerge(keys);
    Slave slave(job);
    if (job.is("write")) {
        measureWrites(job, slave);
    } else {
        measurePolls(job, slave, keys);
    }
    const bool announces = job.is("write") || job.changing;
    return announces && announced < job.count ? 1 : 0;
}
