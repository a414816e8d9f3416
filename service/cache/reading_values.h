// What a reader sees of the cached units: the value written last while it is pending, else the
// controller's.
#ifndef DOV417MODBUS_READING_VALUES_H
#define DOV417MODBUS_READING_VALUES_H

#include <cstddef>

#include "cache/unit_layout.h"

// Copies the values of a range to `out`, low byte first, or one byte a bit.
template <size_t bytesPerUnit>
void readValues(const HostRange& range, const ValueShape& shape, unsigned char* out);
void readDwordsOverWords(const HostRange& range, const ValueShape& shape, unsigned char* out);
void readBits(const HostRange& range, const ValueShape& shape, unsigned char* out);

#endif
