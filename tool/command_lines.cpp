#include "tool/command_lines.h"

#include "line/failure.h"

namespace dov417 {

std::vector<std::string> commandWords(const std::string& line)
{
    std::vector<std::string> words;
    bool isWithin = false;
    char quote = 0;
    for (const char c : line) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r';
        if (quote == 0 && isBlank) {
            isWithin = false;
            continue;
        }
        if (!isWithin && c == '#')
            break;
        if (!isWithin)
            words.emplace_back();
        isWithin = true;
        if (quote == 0 && (c == '"' || c == '\''))
            quote = c;
        else if (c == quote)
            quote = 0;
        else
            words.back() += c;
    }
    if (quote != 0)
        throw UsageFailure(std::string("a quote is not closed: ") + quote);
    return words;
}

void CommandLines::add(const std::string& bytes)
{
    bytes_ += bytes;
}

void CommandLines::end()
{
    hasEnded_ = true;
}

std::optional<std::string> CommandLines::next()
{
    const std::size_t end = bytes_.find('\n');
    if (end == std::string::npos && (!hasEnded_ || bytes_.empty()))
        return std::nullopt;
    lacksItsEnd_ = end == std::string::npos;
    const std::string line = bytes_.substr(0, end);
    bytes_.erase(0, end == std::string::npos ? end : end + 1);
    ++number_;
    return line;
}

bool CommandLines::isAtEnd() const
{
    return hasEnded_ && bytes_.empty();
}

} // namespace dov417
