// What a piece of work leaves behind on the heap.
#ifndef DOV417_TESTS_HEAP_H
#define DOV417_TESTS_HEAP_H

// Runs the work so many times and tells how many blocks of the whole process's heap are in use
// afterwards that were not before. What the loader and the libraries beneath allocate once and
// keep is theirs: a few rounds go first. Under the address sanitizer its leak check answers: 0
// or 1.
long leftBehind(void (*work)(), int rounds);

#endif
