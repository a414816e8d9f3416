// A project as the panel has it open: what can be edited, and what it was read from.
#ifndef DOV417_PANEL_PROJECT_CONTENT_H
#define DOV417_PANEL_PROJECT_CONTENT_H

#include <QStringList>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "live/project.h"
#include "panel/desk/station_words.h"
#include "panel/project/project_tags.h"

namespace dov417 {

// What is edited: a copy costs little, and is what undoing goes back to.
struct ProjectContent {
    LineSetup line;
    std::shared_ptr<const std::vector<Item>> items = std::make_shared<std::vector<Item>>();
    std::vector<ProjectStation> stations;
    std::map<std::string, OrderedJson> pages; // each one's settings, by its member
};

// What a file held, and where: everything that the panel does not edit is written from here.
struct ProjectOrigin {
    std::string file; // empty: none yet
    std::string text; // of it
    Project project;
    KnownTags tags;
    // Its member "panel", which has one member for each page and these.
    OrderedJson panel = OrderedJson::object();
};
constexpr const char* panelMember = "panel";
constexpr const char* formatsMember = "formats";

struct ReadContent {
    ProjectOrigin origin;
    ProjectContent content; // pages: as they stand in the file
    QStringList remarks;    // what its tag file says in vain
};

// Throws a UsageFailure with the place of the first mistake. What a page makes of its settings is
// the page's to say.
ReadContent readContent(const Library& library, const std::string& text, const std::string& file);

// Throws a UsageFailure with the place in the origin: `message` begins with a path within the
// member "panel.NAME".
[[noreturn]] void refuseSettings(const ProjectOrigin& origin, const std::string& name,
                                 const std::string& message);

// The project as it is to stand in this file. `layout` has members beside those of the pages.
// Throws a Failure where it could not be read again.
std::string projectText(const Library& library, const ProjectOrigin& origin,
                        const ProjectContent& content, const OrderedJson& layout,
                        const std::string& file);

// Of a page, by its member; {} where it has none.
OrderedJson settingsIn(const ProjectContent& content, const std::string& name);

// What those that have their own take in one request.
std::map<int, int> maxRegistersOf(const std::vector<ProjectStation>& stations);
StationNames stationNames(const std::vector<ProjectStation>& stations);
bool areSame(const std::vector<ProjectStation>& a, const std::vector<ProjectStation>& b);

bool isSameLine(const LineSetup& a, const LineSetup& b);

} // namespace dov417

#endif
