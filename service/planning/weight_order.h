// The order of requests: station, then register type in table order, then address.
#ifndef DOV417MODBUS_WEIGHT_ORDER_H
#define DOV417MODBUS_WEIGHT_ORDER_H

#include <QString>
#include <QVector>
#include <algorithm>

// Station, register type in the order of driver.regNames, address: to be compared as unsigned.
int getRegAddressWeight(int station, QString regName, int address, int unused);

// Equal weights keep their order.
template <typename Record>
void sortByWeight(QVector<Record>& records)
{
    QVector<unsigned int> weights;
    QVector<int> order;
    weights.reserve(records.size());
    order.reserve(records.size());
    for (int i = 0; i < records.size(); ++i) {
        const Record& record = records.at(i);
        weights.append(static_cast<unsigned int>(
            getRegAddressWeight(record.stationNo, record.regName, record.address, record.length)));
        order.append(i);
    }
    std::stable_sort(order.begin(), order.end(),
                     [&weights](int a, int b) { return weights.at(a) < weights.at(b); });
    QVector<Record> sorted;
    sorted.reserve(records.size());
    for (int i = 0; i < order.size(); ++i) {
        sorted.append(records.at(order.at(i)));
    }
    records = sorted;
}

#endif
