// What is wrong with a JSON file, for the person who wrote it.
#ifndef DOV417_LINE_JSON_ERROR_H
#define DOV417_LINE_JSON_ERROR_H

#include <string>

namespace dov417 {

// "[json.exception.parse_error.101] parse error at line 3, column 5: ..." without its brackets.
inline std::string jsonErrorText(const std::string& text)
{
    return text.substr(text.find(']') + 2);
}

} // namespace dov417

#endif
