#include "text/placed_json.h"

#include <algorithm>
#include <set>

#include "line/failure.h"
#include "line/json_depth.h"
#include "line/json_error.h"

namespace dov417 {

namespace {

struct Mistake {
    std::size_t offset;
    std::string path;
    std::string why;
};

// Goes through a text that is known to be JSON.
class Walker {
public:
    Walker(const std::string& text, std::map<std::string, std::size_t>& offsets)
        : text_(text), offsets_(offsets)
    {
        if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0)
            at_ = 3;
    }

    // Throws a Mistake.
    void walk(const std::string& path, int depth)
    {
        skip(" \t\r\n");
        offsets_[path] = at_;
        if (depth > maxJsonDepth)
            throw Mistake{at_, path, "nested too deep"};
        if (text_[at_] == '{')
            walkObject(path, depth);
        else if (text_[at_] == '[')
            walkArray(path, depth);
        else if (text_[at_] == '"')
            skipText();
        else
            at_ = std::min(text_.find_first_of(" \t\r\n,]}", at_), text_.size());
    }

private:
    void walkObject(const std::string& path, int depth)
    {
        std::set<std::string> names;
        ++at_;
        while (goesOn('}')) {
            const std::size_t from = at_;
            skipText();
            const std::string quoted = text_.substr(from, at_ - from);
            const std::string name = OrderedJson::parse(quoted).get<std::string>();
            if (!names.insert(name).second)
                throw Mistake{from, memberPath(path, name), "is there twice"};
            skip(" \t\r\n:");
            walk(memberPath(path, name), depth + 1);
        }
    }

    void walkArray(const std::string& path, int depth)
    {
        ++at_;
        for (std::size_t i = 0; goesOn(']'); ++i)
            walk(elementPath(path, i), depth + 1);
    }

    // To the next member, or past the end of them.
    bool goesOn(char end)
    {
        skip(" \t\r\n,");
        if (text_[at_] != end)
            return true;
        ++at_;
        return false;
    }

    void skip(const char* characters)
    {
        at_ = std::min(text_.find_first_not_of(characters, at_), text_.size());
    }

    void skipText()
    {
        for (++at_; text_[at_] != '"'; ++at_)
            if (text_[at_] == '\\')
                ++at_;
        ++at_;
    }

    const std::string& text_;
    std::map<std::string, std::size_t>& offsets_;
    std::size_t at_ = 0;
};

} // namespace

PlacedJson::PlacedJson(const std::string& text, const std::string& file) : text_(text), file_(file)
{
    for (std::size_t at = text_.find('\n'); at != std::string::npos; at = text_.find('\n', at + 1))
        lineEnds_.push_back(at);
    try {
        root_ = OrderedJson::parse(text_);
        Walker(text_, offsets_).walk(std::string(), 0);
    } catch (const OrderedJson::parse_error& error) {
        const std::string why = jsonErrorText(error.what());
        const std::size_t at = why.find(": ");
        // The byte is the last one read, from 1.
        throw UsageFailure(file_ + position(error.byte > 0 ? error.byte - 1 : 0) +
                           (at == std::string::npos ? why : why.substr(at + 2)));
    } catch (const OrderedJson::out_of_range& error) { // a number, in quotation marks
        const std::string why = jsonErrorText(error.what());
        const std::size_t from = why.find('\'') + 1;
        const std::string number = why.substr(from, why.rfind('\'') - from);
        throw UsageFailure(file_ + position(text_.find(number)) +
                           "the number is too large: " + number);
    } catch (const Mistake& mistake) {
        throw UsageFailure(file_ + position(mistake.offset) + mistake.path + ": " + mistake.why);
    }
}

const OrderedJson& PlacedJson::root() const
{
    return root_;
}

const std::string& PlacedJson::file() const
{
    return file_;
}

void PlacedJson::refuse(const std::string& path, const std::string& why) const
{
    const auto known = offsets_.find(path);
    throw UsageFailure(file_ + (known == offsets_.end() ? ": " : position(known->second)) +
                       (path.empty() ? "" : path + ": ") + why);
}

int PlacedJson::line(const std::string& path) const
{
    const auto known = offsets_.find(path);
    if (known == offsets_.end())
        return 0;
    const auto next = std::lower_bound(lineEnds_.begin(), lineEnds_.end(), known->second);
    return 1 + static_cast<int>(next - lineEnds_.begin());
}

// Columns are counted in characters, as editors do.
std::string PlacedJson::position(std::size_t offset) const
{
    const std::string before = text_.substr(0, offset);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t start = before.rfind('\n') + 1;
    const auto column =
        std::count_if(before.begin() + static_cast<std::ptrdiff_t>(start), before.end(),
                      [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; });
    return ":" + std::to_string(lines + 1) + ":" + std::to_string(column + 1) + ": ";
}

std::string memberPath(const std::string& parent, const std::string& name)
{
    return parent.empty() ? name : parent + "." + name;
}

std::string elementPath(const std::string& parent, std::size_t index)
{
    return parent + "[" + std::to_string(index) + "]";
}

} // namespace dov417
