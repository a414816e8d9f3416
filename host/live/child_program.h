// What a program does that was started as its own child.
#ifndef DOV417_LIVE_CHILD_PROGRAM_H
#define DOV417_LIVE_CHILD_PROGRAM_H

#include <optional>

namespace dov417 {

// To be called first in main(), before there is an application: nothing where the program was
// started by a person, else its task has been done and this is the exit code.
//
//     if (const std::optional<int> code = runAsChild(argc, argv))
//         return *code;
std::optional<int> runAsChild(int argc, char** argv);

} // namespace dov417

#endif
