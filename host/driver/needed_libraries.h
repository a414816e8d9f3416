// Which shared libraries a file asks the loader for, before any of its code runs.
#ifndef DOV417_DRIVER_NEEDED_LIBRARIES_H
#define DOV417_DRIVER_NEEDED_LIBRARIES_H

#include <string>
#include <vector>

namespace dov417 {

// "libQt5Core.so.5", "libc.so.6", ...; none for a file that cannot be read or that this machine's
// loader would not take: the loader's own message is better.
std::vector<std::string> neededLibraries(const std::string& file);

// The generation of Qt among them, 0 where there is none.
int qtGeneration(const std::vector<std::string>& libraries);

} // namespace dov417

#endif
