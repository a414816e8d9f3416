// The order of requests: station, then register type in table order, then address.
#ifndef DOV417MODBUS_WEIGHT_ORDER_H
#define DOV417MODBUS_WEIGHT_ORDER_H

#include <QString>
#include <QVector>

#include "protocol/register_table.h"

struct Weighed {
    unsigned int weight;
    int index;
};

// weightAt() in the order of driver.regNames, without a look there for each record of a shipped
// register type.
class WeightScale {
public:
    WeightScale();
    unsigned int weigh(int station, const QString& regName, int address) const;

private:
    int places_[registerTypeCount]; // of the shipped names in driver.regNames
};

// Equal weights keep their order.
void sortWeighed(QVector<Weighed>& order);

template <typename Record>
void sortByWeight(QVector<Record>& records)
{
    const WeightScale scale;
    QVector<Weighed> order;
    order.reserve(records.size());
    for (int i = 0; i < records.size(); ++i) {
        const Record& record = records.at(i);
        const Weighed weighed = {scale.weigh(record.stationNo, record.regName, record.address), i};
        order.append(weighed);
    }
    sortWeighed(order);
    QVector<Record> sorted;
    sorted.reserve(records.size());
    for (int i = 0; i < order.size(); ++i) {
        sorted.append(records.at(order.at(i).index));
    }
    records = sorted;
}

#endif
