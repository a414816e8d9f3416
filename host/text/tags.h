// Tag files: CSV with the header name,station,register,address,count,format,comment and, for values
// as engineers have them, scale,offset,unit,decimals,min,max. A tag gives an address a name, for
// every command alike.
#ifndef DOV417_TEXT_TAGS_H
#define DOV417_TEXT_TAGS_H

#include <functional>
#include <string>
#include <vector>

#include "text/tag.h"

namespace dov417 {

std::string limitText(double limit);

// Takes what a file says that counts for nothing, a sentence with its place: nobody may know.
using Remark = std::function<void(const std::string&)>;

// Reads the whole file, as spreadsheets write it: fields end with a comma, a semicolon or a tab, as
// the header's do, and where that is no comma, numbers may have one for their point. The columns
// may come in any order and be written in any case; name, register and address must be there. One
// that is nearly called as one of these is a mistake, others besides are remarked and left alone.
// An empty station is 1, an empty count one value. Empty lines and those that begin with # do not
// count. A last line without a line end has to be whole, and is remarked unless it ends in words or
// a quote: its 20 may have been 200. Throws a UsageFailure that names file, line and column of the
// first mistake. A project file may stand for it: then these are the tags in it.
std::vector<Tag> readTags(const Library& library, const std::string& file,
                          const Remark& remark = Remark());
// The same of the file's content; `file` names it in messages.
std::vector<Tag> parseTags(const Library& library, const std::string& text, const std::string& file,
                           const Remark& remark = Remark());

// The tags that a name with * or ? stands for, in the order of the file.
std::vector<Tag> matchingTags(const std::vector<Tag>& tags, const std::string& wildcard);

// Null if there is none of that name.
const Tag* findTag(const std::vector<Tag>& tags, const std::string& name);

} // namespace dov417

#endif
