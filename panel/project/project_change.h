// One step of what was edited in a project: from one content to another.
#ifndef DOV417_PANEL_PROJECT_CHANGE_H
#define DOV417_PANEL_PROJECT_CHANGE_H

#include <QUndoCommand>
#include <functional>

#include "panel/project/project_content.h"

namespace dov417 {

// Where a page's settings differ by one number, text or switch alone: changes of that are one step,
// as a slider makes many. Empty where more is different.
std::string placeOfChange(const std::string& page, const OrderedJson& before,
                          const OrderedJson& after);

class ProjectChange : public QUndoCommand {
public:
    using Apply = std::function<void(const ProjectContent&)>;
    // `apply` makes the project so.
    ProjectChange(const Apply& apply, const ProjectContent& before, const ProjectContent& after,
                  const QString& what, const std::string& place);

    void undo() override;
    void redo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand* next) override;

private:
    Apply apply_;
    ProjectContent before_;
    ProjectContent after_;
    std::string place_;
};

} // namespace dov417

#endif
