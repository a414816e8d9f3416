// What is edited in a project, as one step that can be taken back.
#include <QScopedValueRollback>
#include <algorithm>

#include "line/failure.h"
#include "panel/project/project_change.h"
#include "panel/project/project_document.h"

namespace dov417 {

namespace {

bool areSame(const std::vector<Item>& a, const std::vector<Item>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
}

} // namespace

void ProjectDocument::tagsChanged()
{
    if (isApplying_ || areSame(desk_.tags().items, *content_.items))
        return;
    ProjectContent content = content_;
    content.items = std::make_shared<const std::vector<Item>>(desk_.tags().items);
    push(content, tr("what is watched"), std::string());
}

void ProjectDocument::setStations(const std::vector<ProjectStation>& stations)
{
    if (areSame(stations, content_.stations))
        return;
    ProjectContent content = content_;
    content.stations = stations;
    content.line.stationMaxRegisters = maxRegistersOf(stations);
    push(content, tr("stations"), std::string());
}

void ProjectDocument::pageChanged(const ProjectPart& part)
{
    if (isApplying_)
        return;
    const OrderedJson settings = part.settings();
    const OrderedJson before = settingsIn(content_, part.name);
    if (settings == before)
        return;
    ProjectContent content = content_;
    content.pages[part.name] = settings;
    if (!part.isStep) {
        content_ = content;
        emit changed();
        return;
    }
    push(content, part.title, placeOfChange(part.name, before, settings));
}

std::map<std::string, OrderedJson> ProjectDocument::partsWithoutSteps() const
{
    std::map<std::string, OrderedJson> pages;
    for (const ProjectPart& part : parts_)
        if (!part.isStep && !part.isLayout)
            pages[part.name] = part.settings();
    return pages;
}

void ProjectDocument::push(const ProjectContent& content, const QString& what,
                           const std::string& place)
{
    const auto again = [this](const ProjectContent& each) { apply(each); };
    history_.push(new ProjectChange(again, content_, content, what, place));
}

void ProjectDocument::apply(const ProjectContent& content)
{
    {
        const QScopedValueRollback<bool> applying(isApplying_, true);
        if (!areSame(*content.items, desk_.tags().items))
            desk_.setItems(*content.items);
        for (const ProjectPart& part : parts_) {
            const OrderedJson wanted = settingsIn(content, part.name);
            if (!part.isStep || wanted == part.settings())
                continue;
            try {
                part.prepared(wanted)();
            } catch (const UsageFailure& failure) {
                emit told(QString::fromUtf8(failure.what()));
            }
        }
    }
    content_ = content;
    for (const auto& [name, settings] : partsWithoutSteps())
        content_.pages[name] = settings;
    tellDesk();
    emit changed();
}

// The line that is open goes on as it is; without one, plans are made for the project's.
void ProjectDocument::tellDesk()
{
    desk_.setStationNames(stationNames(content_.stations));
    if (!desk_.hasLine() && !isSameLine(desk_.lineSetup(), content_.line))
        desk_.setLineSetup(content_.line);
}

} // namespace dov417
