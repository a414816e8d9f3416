// A file that is read whole.
#ifndef DOV417_TEXT_TEXT_FILE_H
#define DOV417_TEXT_TEXT_FILE_H

#include <string>

namespace dov417 {

// An empty file is an empty text. Throws a UsageFailure "cannot read NAMED: why"; `named` is what
// the message calls the file.
std::string contentOf(const std::string& file, const std::string& named);

} // namespace dov417

#endif
