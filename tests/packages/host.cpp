#include <cstdio>
#include <intf.h>

int main() // polls one frame: what an installed package must be good for
{
    intf_initProperty(nullptr, 0, nullptr, nullptr, "1#0#0#3#12", nullptr);
    QList<KEY_ADDRESS> keys;
    keys.append(KEY_ADDRESS());
    keys[0].stationNo = keys[0].length = 1;
    keys[0].regName = QString::fromLatin1("R_W");
    intf_addrMerge(keys);
    FRAME_PRO frame = FRAME_PRO();
    const int polled = intf_getSendFrame(&frame);
    for (int i = 0; i < frame.sendLength; ++i) {
        std::printf("%02X ", frame.frame[i]);
    }
    return polled == 1 ? 0 : 1;
}
