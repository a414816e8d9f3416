// Every path of events up to a depth, for stations of every kind: dov417_late_model DEPTH
// Prints the states; fails if a path leads to a wrong value, and prints that path.
#include <cstdio>
#include <cstdlib>

#include "model_check.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: dov417_late_model DEPTH\n");
        return 2;
    }
    const dov417::ModelResult result = dov417::checkEveryKind(std::atoi(argv[1]));
    std::printf("%s\n", textOf(result).c_str());
    return result.wrong.empty() ? 0 : 1;
}
