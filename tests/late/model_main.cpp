// Every path of events up to a depth, for stations of every kind: dov417_late_model DEPTH
// [echo|copies] Prints the states; fails if a path leads to a wrong value, and prints that path.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "model_check.h"

int main(int argc, char** argv)
{
    using namespace dov417;
    if (argc < 2) {
        std::fprintf(stderr, "usage: dov417_late_model DEPTH [echo|copies]\n");
        return 2;
    }
    const std::string lines = argc > 2 ? argv[2] : "";
    const auto check = lines == "echo"     ? checkEchoes
                       : lines == "copies" ? checkCopies
                                           : checkEveryKind;
    const ModelResult result = check(std::atoi(argv[1]));
    std::printf("%s\n", textOf(result).c_str());
    return result.wrong.empty() ? 0 : 1;
}
