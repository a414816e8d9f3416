#include "panel/project/project_actions.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <algorithm>

#include "line/failure.h"
#include "panel/desk/yes_question.h"
#include "panel/project/line_dialog.h"
#include "panel/project/recent_projects.h"
#include "panel/project/recovery_dialog.h"
#include "panel/project/stations_dialog.h"

namespace dov417 {

namespace {

const char* const projectEnding = ".json";

QString projectFilter()
{
    return ProjectActions::tr("Projects (*.json);;All files (*)");
}

} // namespace

ProjectActions::ProjectActions(PanelDesk& desk, ProjectDocument& document, QMainWindow& window)
    : desk_(desk), document_(document), window_(window), unsaved_(document)
{
    makeFileMenu(window.menuBar()->addMenu(tr("&File")));
    makeEditMenu(window.menuBar()->addMenu(tr("&Edit")));
    connect(&document, &ProjectDocument::told, this, &ProjectActions::told);
    connect(&unsaved_, &UnsavedWork::failed, this, [this](const QString& why) {
        emit told(tr("What is not saved cannot be kept for the case that this program ends: %1")
                      .arg(why));
    });
}

void ProjectActions::makeFileMenu(QMenu* menu)
{
    const auto add = [this, menu](const QString& text, const QKeySequence& keys, const char* name,
                                  const std::function<void()>& todo) {
        QAction* const action = menu->addAction(text);
        action->setShortcut(keys);
        action->setObjectName(QLatin1String(name));
        connect(action, &QAction::triggered, this, [todo]() { todo(); });
    };
    add(tr("&New"), QKeySequence::New, "newProject", [this]() { begin({}, LineSetup()); });
    add(tr("&Open \u2026"), QKeySequence::Open, "openProject", [this]() { chooseAndOpen(); });
    recent_ = menu->addMenu(tr("Open &recent"));
    connect(recent_, &QMenu::aboutToShow, this, [this]() { listRecent(); });
    menu->addSeparator();
    add(tr("&Save"), QKeySequence::Save, "saveProject", [this]() { save(); });
    add(tr("Save &as \u2026"), QKeySequence(QStringLiteral("Ctrl+Shift+S")), "saveProjectAs",
        [this]() { saveAs(); });
    menu->addSeparator();
    add(tr("Settings of the &line \u2026"), QKeySequence(QStringLiteral("Ctrl+L")), "lineSettings",
        [this]() { editLine(); });
    add(tr("S&tations \u2026"), QKeySequence(QStringLiteral("Ctrl+T")), "stations",
        [this]() { editStations(); });
    menu->addSeparator();
    add(tr("&Quit"), QKeySequence(QStringLiteral("Ctrl+Q")), "quit", [this]() { window_.close(); });
}

void ProjectActions::makeEditMenu(QMenu* menu)
{
    QAction* const undo = histories_.createUndoAction(&window_, tr("&Undo"));
    QAction* const redo = histories_.createRedoAction(&window_, tr("&Redo"));
    setHistory(nullptr);
    undo->setShortcut(QKeySequence::Undo);
    redo->setShortcuts(
        {QKeySequence(QStringLiteral("Ctrl+Shift+Z")), QKeySequence(QStringLiteral("Ctrl+Y"))});
    undo->setObjectName(QStringLiteral("undo"));
    redo->setObjectName(QStringLiteral("redo"));
    menu->addAction(undo);
    menu->addAction(redo);
}

void ProjectActions::listRecent()
{
    recent_->clear();
    for (const QString& file : recentProjects()) {
        QAction* const action = recent_->addAction(QString(file).replace('&', QLatin1String("&&")));
        connect(action, &QAction::triggered, this, [this, file]() { open(file); });
    }
    if (recent_->isEmpty())
        recent_->addAction(tr("No project was opened here yet."))->setEnabled(false);
}

// ---- another project --------------------------------------------------------------------------

void ProjectActions::setHistory(QUndoStack* history)
{
    QUndoStack* const shown = history ? history : &document_.history();
    histories_.addStack(shown);
    histories_.setActiveStack(shown);
}

void ProjectActions::addPage(PanelPage* page)
{
    pages_.push_back(page);
    unsaved_.addPage(page);
}

// The project last: where something else is saved, the project may name its file.
bool ProjectActions::mayLeave()
{
    return mayCloseLine() &&
           std::all_of(pages_.begin(), pages_.end(),
                       [](PanelPage* page) { return page->mayForget(); }) &&
           mayForget();
}

bool ProjectActions::mayCloseLine()
{
    const int writes = static_cast<int>(desk_.writesUnderWay());
    return writes == 0 ||
           QMessageBox::question(
               &window_, tr("Writes are under way"),
               tr("%n value(s) are being written. What becomes of them is not known if the line is "
                  "closed now. Close it?",
                  nullptr, writes),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

bool ProjectActions::mayForget()
{
    if (!document_.isModified())
        return true;
    const auto answer = QMessageBox::question(
        &window_, tr("Not saved"),
        tr("%1 has changes that are not saved. Save them?").arg(document_.name()),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

bool ProjectActions::begin(const std::vector<Item>& items, const LineSetup& line,
                           const std::vector<ProjectStation>& stations)
{
    if (!mayLeave())
        return false;
    emit told(QString());
    document_.begin(items, line, stations);
    return true;
}

bool ProjectActions::open(const QString& file)
{
    if (!mayLeave())
        return false;
    emit told(QString());
    try {
        document_.open(file);
    } catch (const Failure& failure) {
        emit told(tr("Nothing was opened. %1").arg(QString::fromUtf8(failure.what())));
        return false;
    }
    emit opened();
    offerUnsaved({document_.file()});
    return true;
}

bool ProjectActions::chooseAndOpen()
{
    const QString file = QFileDialog::getOpenFileName(
        &window_, tr("Open a project"), QFileInfo(document_.file()).path(), projectFilter());
    return !file.isEmpty() && open(file);
}

// ---- saving -------------------------------------------------------------------------------------

bool ProjectActions::save()
{
    if (document_.file().isEmpty())
        return saveAs();
    if (document_.isOtherOnDisk() &&
        !saysYes(&window_, tr("Changed by another program"),
                 tr("%1 was written by another program since it was opened here. Save over it?")
                     .arg(document_.file())))
        return false;
    return saveIn(document_.file());
}

bool ProjectActions::saveAs()
{
    QFileDialog dialog(&window_, tr("Save the project"), QFileInfo(document_.file()).path(),
                       projectFilter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QLatin1String(projectEnding).mid(1));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    return saveIn(dialog.selectedFiles().constFirst());
}

bool ProjectActions::saveIn(const QString& file)
{
    try {
        document_.save(file);
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    emit told(tr("%1 is saved.").arg(document_.file()));
    return true;
}

// ---- the line ---------------------------------------------------------------------------------

void ProjectActions::editLine()
{
    LineDialog dialog(document_.line(), &window_);
    if (dialog.exec() != QDialog::Accepted)
        return;
    document_.setLine(dialog.setup());
    if (dialog.isToOpen() && mayCloseLine())
        document_.openLine();
}

void ProjectActions::editStations()
{
    std::set<int> watched;
    for (const Item& item : desk_.tags().items)
        watched.insert(item.address.station);
    StationsDialog dialog(document_.stations(), watched, &window_);
    if (dialog.exec() == QDialog::Accepted)
        document_.setStations(dialog.stations());
}

// ---- what was not saved -------------------------------------------------------------------------

void ProjectActions::offerUnsaved(const QStringList& projects)
{
    std::vector<UnsavedCopy> copies = findUnsaved(desk_.library(), projects);
    if (copies.empty())
        return;
    RecoveryDialog dialog(copies, &window_);
    if (dialog.exec() != QDialog::Accepted || !dialog.chosen() || !mayLeave())
        return;
    const UnsavedCopy copy = *dialog.chosen();
    try {
        document_.takeUp(copy.read, copy.project);
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return;
    }
    unsaved_.adopt(copy);
    QStringList said(tr("This is what was not saved; save it to keep it."));
    for (PanelPage* const page : pages_)
        if (const auto kept = copy.ofPages.find(page->settingsName()); kept != copy.ofPages.end())
            said += page->takeUpUnsaved(*kept);
    said.removeAll(QString());
    emit told(said.join(QLatin1Char(' ')));
    emit opened();
}

void ProjectActions::keepUnsaved()
{
    unsaved_.keepNow();
}

void ProjectActions::dropUnsaved()
{
    unsaved_.drop();
}

} // namespace dov417
