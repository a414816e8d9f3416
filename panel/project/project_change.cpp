#include "panel/project/project_change.h"

namespace dov417 {

namespace {

constexpr int changesOfOnePlace = 1;

} // namespace

std::string placeOfChange(const std::string& page, const OrderedJson& before,
                          const OrderedJson& after)
{
    const OrderedJson steps = OrderedJson::diff(before, after);
    if (steps.size() != 1 || steps[0].at("op") != "replace" || !steps[0].at("value").is_primitive())
        return std::string();
    return page + steps[0].at("path").get<std::string>();
}

ProjectChange::ProjectChange(const Apply& apply, const ProjectContent& before,
                             const ProjectContent& after, const QString& what,
                             const std::string& place)
    : QUndoCommand(what), apply_(apply), before_(before), after_(after), place_(place)
{
}

void ProjectChange::undo()
{
    apply_(before_);
}

// The first time, too: what a page or the desk has done already is not done again.
void ProjectChange::redo()
{
    apply_(after_);
}

int ProjectChange::id() const
{
    return place_.empty() ? -1 : changesOfOnePlace;
}

bool ProjectChange::mergeWith(const QUndoCommand* next)
{
    const auto* const change = static_cast<const ProjectChange*>(next);
    if (change->place_ != place_)
        return false;
    after_ = change->after_;
    setObsolete(after_.pages == before_.pages);
    return true;
}

} // namespace dov417
