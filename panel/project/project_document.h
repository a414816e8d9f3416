// The project that is open: what is watched, on which line, and how the pages are arranged; with
// its file, and with what was edited since, to be undone and done again.
//
// It follows the desk and the pages: whoever edits there edits the project. Writes to a controller
// are no edits.
#ifndef DOV417_PANEL_PROJECT_DOCUMENT_H
#define DOV417_PANEL_PROJECT_DOCUMENT_H

#include <QObject>
#include <QUndoStack>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "panel/desk/panel_page.h"
#include "panel/project/project_content.h"

namespace dov417 {

// What a project keeps of a part of the window; see PanelPage.
struct ProjectPart {
    std::string name;
    QString title;
    std::function<OrderedJson()> settings;
    std::function<std::function<void()>(const OrderedJson&)> prepared;
    bool isLayout = false; // saved, but no edit
    // With which it begins: where nothing else is there, a project need not say so.
    OrderedJson defaults = OrderedJson::object();
    bool isStep = true; // a change of it is undone
};

// All that is written into a file, for another thread to do so.
struct ProjectImage {
    const Library* library = nullptr;
    std::shared_ptr<const ProjectOrigin> origin;
    ProjectContent content;
    OrderedJson layout = OrderedJson::object();
    std::string file; // empty: none yet

    // See projectText().
    std::string text() const;
};

class ProjectDocument : public QObject {
    Q_OBJECT

public:
    static constexpr int maxUndo = 100;

    // The desk is to outlive it.
    explicit ProjectDocument(PanelDesk& desk);
    ~ProjectDocument() override;

    // Before anything is opened. The page is to outlive the document's use.
    void addPage(PanelPage* page);
    void addLayout(const std::string& name, const std::function<OrderedJson()>& settings,
                   const std::function<std::function<void()>(const OrderedJson&)>& prepared);

    const QString& file() const // absolute; empty: none yet
    {
        return file_;
    }
    QString name() const; // for people
    bool isModified() const;
    const std::vector<ProjectStation>& stations() const
    {
        return content_.stations;
    }
    const LineSetup& line() const
    {
        return content_.line;
    }
    QUndoStack& history()
    {
        return history_;
    }
    ProjectImage image() const;

    // A new one, which nothing has been done to. The line that is open is closed, and this one
    // opened if it names one.
    void begin(const std::vector<Item>& items, const LineSetup& line,
               const std::vector<ProjectStation>& stations = {});
    // Throws a UsageFailure with the place of a mistake: nothing is different then, and the line
    // that is open goes on.
    void open(const QString& file);
    // What was read from somewhere else and is not saved in this file, which may be empty. The same
    // of mistakes.
    void takeUp(const ReadContent& unsaved, const QString& file);
    // Throws a Failure: the file holds what it held before then.
    void save(const QString& file);
    // Another program has written the file since it was opened or saved here.
    bool isOtherOnDisk() const;

    // For the line that is opened next. An edit, unless nothing has been done yet.
    void setLine(const LineSetup& line);
    // An edit. What they take in one request counts for the line that is opened next.
    void setStations(const std::vector<ProjectStation>& stations);
    // Opens it with the project's settings.
    void openLine();

signals:
    // Content, file, or whether it is modified.
    void changed();
    // See PanelPage.
    void told(const QString& text);

private:
    std::function<void()> preparedParts(const ReadContent& read);
    void take(ReadContent read, const QString& file);
    void forgetKnownMembers(ProjectOrigin& origin) const;
    std::map<std::string, OrderedJson> pagesNow() const;
    OrderedJson layoutNow() const;
    void tagsChanged();
    void pageChanged(const ProjectPart& part);
    // Of the parts of which a change is no step.
    std::map<std::string, OrderedJson> partsWithoutSteps() const;
    void push(const ProjectContent& content, const QString& what, const std::string& place);
    void apply(const ProjectContent& content);
    void tellDesk();

    PanelDesk& desk_;
    std::vector<ProjectPart> parts_;
    QString file_;
    std::shared_ptr<const ProjectOrigin> origin_ = std::make_shared<ProjectOrigin>();
    ProjectContent content_;
    QUndoStack history_;
    std::map<std::string, OrderedJson> savedWithoutSteps_;
    bool isApplying_ = false;
};

} // namespace dov417

#endif
