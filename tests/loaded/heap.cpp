#include "heap.h"

#if defined(__SANITIZE_ADDRESS__)
#define HAS_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define HAS_LEAK_CHECK 1
#endif
#endif

namespace {

void run(void (*work)(), int rounds)
{
    for (int i = 0; i < rounds; ++i) {
        work();
    }
}

} // namespace

#ifdef HAS_LEAK_CHECK

// Blocks cannot be counted here: the sanitizer keeps the exit functions of unloaded libraries.
extern "C" int __lsan_do_recoverable_leak_check();

long leftBehind(void (*work)(), int rounds)
{
    run(work, rounds);
    return __lsan_do_recoverable_leak_check();
}

#else

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <malloc.h>

// The program's own definitions of the allocation functions come before those of the C library,
// for every library that it loads. The C library's statistics would not do: they take its cache of
// freed blocks for used ones.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<long> blocks;

void* counted(void* block)
{
    blocks += block != nullptr ? 1 : 0;
    return block;
}

} // namespace

long leftBehind(void (*work)(), int rounds)
{
    run(work, 20);
    const long before = blocks;
    run(work, rounds);
    return blocks - before;
}

extern "C" {

void* malloc(std::size_t size) noexcept
{
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept
{
    if (block == nullptr) {
        return malloc(size);
    }
    if (size == 0) {
        free(block);
        return nullptr;
    }
    return __libc_realloc(block, size);
}

void free(void* block) noexcept
{
    blocks -= block != nullptr ? 1 : 0;
    __libc_free(block);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

} // extern "C"

#endif
