// Polls 128 watched words in which nothing changed, as often as it is told: bench/on-arm
// counts what the processor does for it.
#include <QByteArray>
#include <QString>
#include <cstdio>
#include <cstdlib>

#include <intf.h>

#include "protocol/crc.h"

namespace {

int changes = 0;
void count(int, int, QString&, int)
{
    ++changes;
}

} // namespace

int main(int argc, char** argv)
{
    const int polls = argc > 1 ? std::atoi(argv[1]) : 1;
    intf_setAddrValueChangeCallBack(count);
    intf_initProperty(nullptr, 0, nullptr, nullptr, "1#0#0#3#12", nullptr);
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = 1;
    key.regName = QString::fromLatin1("R_W");
    key.length = 128;
    QList<KEY_ADDRESS> keys;
    keys << key;
    intf_addrMerge(keys);

    const int length = 3 + 256;
    QByteArray reply(length + crcSize, 0);
    reply[0] = 1;
    reply[1] = 3; // the byte count of 256 does not fit its byte: 0
    appendCrc(reinterpret_cast<unsigned char*>(reply.data()), length);
    FRAME_PRO frame = FRAME_PRO();
    QString text;
    int accepted = 0;
    for (int i = 0; i < polls; ++i) {
        intf_getSendFrame(&frame);
        accepted += intf_dealRcvFrame(&reply, &text) == 1 ? 1 : 0;
    }
    std::printf("%d polls, %d accepted, %d changes\n", polls, accepted, changes);
    return accepted == polls && changes == 0 ? 0 : 1;
}
