// Values as the line's thread tells them, made up.
#ifndef DOV417_TESTS_MADE_VIEWS_H
#define DOV417_TESTS_MADE_VIEWS_H

#include "panel/desk/line_batch.h"

namespace dov417 {

inline Address registerAt(int first, int station = 1)
{
    Address address;
    address.station = station;
    address.regName = "R_W";
    address.first = first;
    return address;
}

inline View goodView(const Address& address, unsigned char value, long long changes = 0)
{
    View view;
    view.address = address;
    view.hasValue = true;
    view.value = {value};
    view.changes = changes;
    view.lastGood = view.lastChange = Clock::now();
    return view;
}

inline LineBatch batchOf(int generation, const std::vector<View>& values)
{
    LineBatch batch;
    batch.generation = generation;
    batch.values = values;
    batch.made = Clock::now();
    batch.state.phase = LinePhase::open;
    return batch;
}

} // namespace dov417

#endif
