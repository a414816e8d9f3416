// A library that needs another Qt. Whoever runs its code would not live to tell.
#include <cstdlib>

extern "C" int coreOfAnotherQt();

namespace {

const struct Trap {
    Trap()
    {
        if (coreOfAnotherQt() == 0)
            std::abort();
    }
} trap;

} // namespace
