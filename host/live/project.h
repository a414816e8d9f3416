// A project file: one JSON object with what belongs to a line and its machine. docs/project-file.md
// describes it.
#ifndef DOV417_LIVE_PROJECT_H
#define DOV417_LIVE_PROJECT_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "live/line_setup.h"
#include "text/json_tags.h"
#include "text/tags.h"

namespace dov417 {

struct ProjectStation {
    int number = 0;
    std::string name;
    std::optional<int> maxRegisters; // in one request, or 16 coils for each
    OrderedJson others = OrderedJson::object();
};

// `others` are the members that are not known here: a newer program's, or those of the root that
// belong to the panel alone. They are written as they were read.
struct Project {
    int version = projectVersion; // of the file; more than is known here: there is more in it
    LineSetup line;               // never its log
    OrderedJson othersOfLine = OrderedJson::object();
    std::vector<ProjectStation> stations;
    std::vector<JsonTag> tags;
    std::string tagFile; // instead of tags: a CSV file, by its way from the project's folder
    OrderedJson others = OrderedJson::object();
    std::shared_ptr<const PlacedJson> source; // for the places in messages; null: of no file
};

// All of it or nothing: throws a UsageFailure that begins with "FILE:LINE:COLUMN: MEMBER: " at the
// first mistake. What the tags mean takes the library: tagsOf().
Project readProject(const std::string& file);
// The same of a file's content; `file` names it in messages.
Project parseProject(const std::string& text, const std::string& file);

// Those in it, or those of its tag file; `projectFile` is where the project lies. Throws a
// UsageFailure with the place of a mistake.
std::vector<Tag> tagsOf(const Library& library, const Project& project,
                        const std::string& projectFile, const Remark& remark = Remark());
// The tag file as it is to be opened.
std::string tagFileOf(const Project& project, const std::string& projectFile);

// Throws a Failure where it holds what could not be read again.
std::string toText(const Project& project);
// The file holds this project then, or what it held before: throws a Failure.
void writeProject(const std::string& file, const Project& project);

} // namespace dov417

#endif
