#include "allocation_count.h"

#include <cstddef>

namespace {

long count = 0;

} // namespace

extern "C" {

void* __libc_malloc(size_t size);

void* malloc(size_t size)
{
    ++count;
    return __libc_malloc(size);
}
}

long allocationCount()
{
    return count;
}
