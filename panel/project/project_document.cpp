#include "panel/project/project_document.h"

#include <QFileInfo>
#include <QScopedValueRollback>

#include "line/failure.h"
#include "line/replace_file.h"
#include "panel/project/recent_projects.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

// As slow as one at the end of a real line.
simulator::SimulationOptions trialController()
{
    constexpr int responseTimeMs = 3;
    simulator::SimulationOptions options;
    options.baudLimit = true;
    options.responseTimeMs = responseTimeMs;
    return options;
}

} // namespace

std::string ProjectImage::text() const
{
    return projectText(*library, *origin, content, layout, file);
}

ProjectDocument::ProjectDocument(PanelDesk& desk) : desk_(desk)
{
    history_.setUndoLimit(maxUndo);
    connect(&history_, &QUndoStack::cleanChanged, this, &ProjectDocument::changed);
    connect(&desk, &PanelDesk::tagsChanged, this, &ProjectDocument::tagsChanged);
    connect(&desk, &PanelDesk::lineSetupChanged, this, [this]() {
        LineSetup line = content_.line;
        line.gap = desk_.lineSetup().gap; // chosen on the page of the plan
        setLine(line);
    });
}

// The undo stack emits a change while it is destroyed, when what listens is half gone.
ProjectDocument::~ProjectDocument()
{
    history_.disconnect(this);
}

void ProjectDocument::addPage(PanelPage* page)
{
    const std::string name = page->settingsName();
    if (name.empty())
        return;
    const ProjectPart part{name,
                           page->title(),
                           [page]() { return page->settings(); },
                           [page](const OrderedJson& settings) { return page->prepared(settings); },
                           false,
                           page->settings(),
                           page->settingsAreSteps()};
    parts_.push_back(part);
    content_.pages[name] = page->settings();
    savedWithoutSteps_ = partsWithoutSteps();
    connect(page, &PanelPage::settingsChanged, this, [this, part]() { pageChanged(part); });
}

void ProjectDocument::addLayout(
    const std::string& name, const std::function<OrderedJson()>& settings,
    const std::function<std::function<void()>(const OrderedJson&)>& prepared)
{
    parts_.push_back({name, QString(), settings, prepared, true, OrderedJson::object(), false});
}

QString ProjectDocument::name() const
{
    return file_.isEmpty() ? tr("untitled") : QFileInfo(file_).fileName();
}

bool ProjectDocument::isModified() const
{
    return !history_.isClean() || partsWithoutSteps() != savedWithoutSteps_;
}

ProjectImage ProjectDocument::image() const
{
    ProjectImage image{&desk_.library(), origin_, content_, layoutNow(), file_.toStdString()};
    for (const ProjectPart& part : parts_)
        if (!part.isLayout && settingsIn(content_, part.name) == part.defaults)
            image.content.pages.erase(part.name);
    return image;
}

// ---- another project --------------------------------------------------------------------------

void ProjectDocument::begin(const std::vector<Item>& items, const LineSetup& line,
                            const std::vector<ProjectStation>& stations)
{
    ReadContent read;
    read.content.items = std::make_shared<const std::vector<Item>>(items);
    read.content.line = line;
    read.content.stations = stations;
    take(read, QString());
    openLine();
}

void ProjectDocument::open(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    const std::string name = path.toStdString();
    const std::string what = tr("the project %1").arg(path).toStdString();
    const ReadContent read = readContent(desk_.library(), contentOf(name, what), name);
    take(read, path);
    rememberProject(path);
    QStringList remarks = read.remarks;
    if (isNewer(*read.origin.project.source))
        remarks.prepend(tr("%1 is a newer program's. What is not known here counts for nothing; "
                           "it is kept when the project is saved.")
                            .arg(path));
    if (!remarks.isEmpty())
        emit told(remarks.join(QLatin1Char('\n')));
    openLine();
}

void ProjectDocument::takeUp(const ReadContent& unsaved, const QString& file)
{
    take(unsaved, file);
    history_.resetClean();
    openLine();
    emit changed();
}

// Whatever may be wrong is found before anything is different.
std::function<void()> ProjectDocument::preparedParts(const ReadContent& read)
{
    std::vector<std::function<void()>> all;
    for (const ProjectPart& part : parts_)
        try {
            all.push_back(part.prepared(settingsIn(read.content, part.name)));
        } catch (const UsageFailure& failure) {
            refuseSettings(read.origin, part.name, failure.what());
        }
    return [all]() {
        for (const auto& each : all)
            each();
    };
}

void ProjectDocument::take(ReadContent read, const QString& file)
{
    const std::function<void()> arrange = preparedParts(read);
    {
        const QScopedValueRollback<bool> applying(isApplying_, true);
        desk_.beginProject(*read.content.items);
        arrange();
    }
    file_ = file;
    content_ = read.content;
    content_.pages = pagesNow();
    forgetKnownMembers(read.origin);
    origin_ = std::make_shared<const ProjectOrigin>(read.origin);
    history_.clear();
    savedWithoutSteps_ = partsWithoutSteps();
    desk_.setStationNames(stationNames(content_.stations));
    emit changed();
}

// What a page has read it writes itself; the rest stays as it was.
void ProjectDocument::forgetKnownMembers(ProjectOrigin& origin) const
{
    for (const ProjectPart& part : parts_) {
        const auto before = origin.panel.find(part.name);
        if (before == origin.panel.end() || !before->is_object())
            continue;
        const OrderedJson own = part.settings();
        for (const auto& [member, value] : own.items())
            before->erase(member);
    }
}

// ---- its file ---------------------------------------------------------------------------------

void ProjectDocument::save(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    ProjectImage saved = image();
    saved.file = path.toStdString();
    const std::string text = saved.text();
    QString why;
    if (!replaceFile(path, QByteArray::fromStdString(text), &why))
        throw Failure(tr("The project could not be saved: %1").arg(why).toStdString());
    ReadContent read = readContent(desk_.library(), text, saved.file);
    forgetKnownMembers(read.origin);
    origin_ = std::make_shared<const ProjectOrigin>(read.origin);
    file_ = path;
    rememberProject(path);
    savedWithoutSteps_ = partsWithoutSteps();
    history_.setClean();
    emit changed();
}

bool ProjectDocument::isOtherOnDisk() const
{
    if (file_.isEmpty() || !QFileInfo::exists(file_))
        return false;
    try {
        return contentOf(file_.toStdString(), file_.toStdString()) != origin_->text;
    } catch (const UsageFailure&) {
        return true;
    }
}

OrderedJson ProjectDocument::layoutNow() const
{
    OrderedJson layout = OrderedJson::object();
    for (const ProjectPart& part : parts_)
        if (part.isLayout)
            layout[part.name] = part.settings();
    return layout;
}

std::map<std::string, OrderedJson> ProjectDocument::pagesNow() const
{
    std::map<std::string, OrderedJson> pages;
    for (const ProjectPart& part : parts_)
        if (!part.isLayout)
            pages[part.name] = part.settings();
    return pages;
}

// ---- the line ---------------------------------------------------------------------------------

void ProjectDocument::setLine(const LineSetup& line)
{
    if (isSameLine(line, content_.line))
        return;
    ProjectContent content = content_;
    content.line = line;
    if (file_.isEmpty() && !isModified() && history_.count() == 0) {
        content_ = content;
        tellDesk();
        emit changed();
    } else {
        push(content, tr("settings of the line"), std::string());
    }
}

void ProjectDocument::openLine()
{
    LineSetup line = content_.line;
    if (line.simulated)
        line.port.clear(); // counts for nothing then
    if (line.simulated || !line.port.empty())
        desk_.open(line, trialController());
    else
        desk_.setLineSetup(line);
}

} // namespace dov417
