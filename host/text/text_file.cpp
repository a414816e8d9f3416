#include "text/text_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "line/failure.h"

namespace dov417 {

std::string contentOf(const std::string& file, const std::string& named)
{
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    // Of an empty file nothing is inserted, which counts as a failure without an error.
    if (!in || (!(text << in.rdbuf()) && errno != 0))
        throw UsageFailure("cannot read " + named + ": " + std::strerror(errno));
    return text.str();
}

} // namespace dov417
