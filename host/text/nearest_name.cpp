#include "text/nearest_name.h"

#include <QString>
#include <algorithm>
#include <vector>

namespace dov417 {

namespace {

// A short name is too near to words that mean something else: id and min, state and scale.
constexpr int lettersAMistake = 4;

// How many letters are missing, too many, others, or have changed places with the next.
int mistakesIn(const QString& text, const QString& name)
{
    const int columns = static_cast<int>(name.size()) + 1;
    std::vector<std::vector<int>> least(static_cast<std::size_t>(text.size()) + 1);
    for (int i = 0; i <= text.size(); ++i) {
        std::vector<int>& row = least.at(static_cast<std::size_t>(i));
        row.resize(static_cast<std::size_t>(columns), i);
        for (int j = 0; j < columns; ++j) {
            const auto at = [&](int back, int left) {
                return least.at(static_cast<std::size_t>(i - back))
                    .at(static_cast<std::size_t>(j - left));
            };
            int& here = row.at(static_cast<std::size_t>(j));
            if (i == 0 || j == 0) {
                here = i + j;
                continue;
            }
            const bool isSame = text.at(i - 1) == name.at(j - 1);
            here = std::min({at(1, 0) + 1, at(0, 1) + 1, at(1, 1) + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && text.at(i - 1) == name.at(j - 2) &&
                text.at(i - 2) == name.at(j - 1))
                here = std::min(here, at(2, 2) + 1);
        }
    }
    return least.back().back();
}

} // namespace

const char* misspelt(const std::string& text, const char* const* names, std::size_t count)
{
    const QString letters = QString::fromStdString(text).trimmed().toLower();
    for (const char* const* name = names; name != names + count; ++name) {
        const QString known = QString::fromLatin1(*name);
        const int allowed = std::max(1, static_cast<int>(known.size()) / lettersAMistake);
        // The text may be as long as a file.
        if (letters.size() <= known.size() + allowed && mistakesIn(letters, known) <= allowed)
            return *name;
    }
    return nullptr;
}

} // namespace dov417
