// Lines of commands from the standard input: where they end, and the words in them.
#ifndef DOV417_TOOL_COMMAND_LINES_H
#define DOV417_TOOL_COMMAND_LINES_H

#include <optional>
#include <string>
#include <vector>

namespace dov417 {

// The words of a line. Quotes, single or double, keep blanks within a word; what follows a # at the
// beginning of one is a comment. Throws a UsageFailure where a quote is not closed.
std::vector<std::string> commandWords(const std::string& line);

// Bytes as they come, and the lines that they make.
class CommandLines {
public:
    void add(const std::string& bytes);
    // No more will come: what is there is a line, too, though without its end.
    void end();

    // The next one, without its end.
    std::optional<std::string> next();
    bool isAtEnd() const; // and there is no next one
    // Of the line that next() gave last: it may be the beginning of one, of a program that died
    // while it wrote.
    bool lacksItsEnd() const
    {
        return lacksItsEnd_;
    }
    // Of the same, from 1.
    int number() const
    {
        return number_;
    }

private:
    std::string bytes_;
    bool hasEnded_ = false;
    bool lacksItsEnd_ = false;
    int number_ = 0;
};

} // namespace dov417

#endif
