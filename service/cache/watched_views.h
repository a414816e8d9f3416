// Which views of a unit the host watches.
#ifndef DOV417MODBUS_WATCHED_VIEWS_H
#define DOV417MODBUS_WATCHED_VIEWS_H

#include "cache/unit_layout.h"
#include "records.h"

// Marks the views that a range covers, besides those that are marked already.
void watchValues(const HostRange& range, const ValueShape& shape);
void watchBits(const HostRange& range, const ValueShape& shape);

// Nothing of the unit is watched any more.
inline void forgetViews(_DATA_& unit)
{
    unit.viewFlags = 0;
    unit.bitMonitor = 0;
}

#endif
