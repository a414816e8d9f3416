// The columns of a tag, whatever file has them, and the tag that their texts make.
#ifndef DOV417_TEXT_TAG_COLUMNS_H
#define DOV417_TEXT_TAG_COLUMNS_H

#include <array>
#include <cstddef>
#include <string>

#include "text/tag.h"

namespace dov417 {

enum TagColumn {
    nameColumn,
    stationColumn,
    registerColumn,
    addressColumn,
    countColumn,
    formatColumn,
    commentColumn,
    scaleColumn,
    offsetColumn,
    unitColumn,
    decimalsColumn,
    minColumn,
    maxColumn,
    tagColumnCount
};
extern const std::array<const char*, tagColumnCount> tagColumnNames;
extern const std::array<TagColumn, 3> neededTagColumns;

// By column; empty where nothing is said.
using TagTexts = std::array<std::string, tagColumnCount>;

// Throws a UsageFailure that says why no tag may be called so.
void requireTagName(const std::string& name);

// Throws a UsageFailure; `column` is then where the mistake is.
Tag tagOf(const Library& library, const TagTexts& texts, TagColumn& column);

} // namespace dov417

#endif
