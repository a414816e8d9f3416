#include "planning/weight_order.h"

#include <algorithm>

#include "protocol.h"
#include "protocol/address_text.h"

WeightScale::WeightScale()
{
    for (int i = 0; i < registerTypeCount; ++i) {
        places_[i] = static_cast<int>(driver.regNames.indexOf(REG_LIST[i]));
    }
}

unsigned int WeightScale::weigh(int station, const QString& regName, int address) const
{
    const int index = indexOfName(regName);
    const int place =
        index >= 0 ? places_[index] : static_cast<int>(driver.regNames.indexOf(regName));
    return static_cast<unsigned int>(
        weightAt(static_cast<int>(driver.regNames.size()), station, place, address));
}

void sortWeighed(QVector<Weighed>& order)
{
    std::sort(order.begin(), order.end(), [](const Weighed& a, const Weighed& b) {
        return a.weight != b.weight ? a.weight < b.weight : a.index < b.index;
    });
}
