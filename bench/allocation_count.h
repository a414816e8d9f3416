// Counts what goes to the heap, by standing in front of malloc.
#ifndef DOV417_BENCH_ALLOCATION_COUNT_H
#define DOV417_BENCH_ALLOCATION_COUNT_H

long allocationCount();

#endif
