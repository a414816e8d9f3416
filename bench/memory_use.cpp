// What a cached unit and a planned request take of the heap, in bytes.
#include <QDebug>
#include <iostream>
#include <malloc.h>
#include <vector>

#include "intf.h"

namespace {

void silence(QtMsgType, const QMessageLogContext&, const QString&) {}

long heapInUse()
{
    malloc_trim(0);
    return static_cast<long>(mallinfo2().uordblks + mallinfo2().hblkhd);
}

} // namespace

int main()
{
    qInstallMessageHandler(silence);
    const QString words = QString::fromLatin1("R_W");
    const int count = 100000;
    std::vector<unsigned char> out(2 * count);
    intf_initProperty(nullptr, 0, nullptr, nullptr, "0#0#0#3#0", nullptr);

    long before = heapInUse();
    intf_getData(1, words, 0, count, out.data());
    std::cout << "a cached unit: " << (heapInUse() - before) / count << " bytes\n";

    const int requests = 10000;
    QList<KEY_ADDRESS> keys;
    for (int i = 0; i < requests; ++i) {
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = 1;
        key.regName = words;
        key.address = 2 * i;
        key.length = 1;
        keys.append(key);
    }
    before = heapInUse();
    intf_addrMerge(keys);
    std::cout << "a planned request: " << (heapInUse() - before) / requests << " bytes\n";
    return 0;
}
