#include "panel/desk/own_controller.h"

#include <QDir>
#include <utility>

#include "line/failure.h"

namespace dov417 {

void OwnController::onReport(std::function<void()> came)
{
    came_ = std::move(came);
}

simulator::SimulationOptions OwnController::linked(const simulator::SimulationOptions& options)
{
    conditions_ = simulator::Conditions();
    conditions_.faults = options.faults;
    conditions_.responseTimeMs = options.responseTimeMs;
    simulator::SimulationOptions linked = options;
    if (!linked.link.empty())
        return linked;
    // Nobody else may write there: no other program's port comes to bear the name.
    if (!folder_)
        folder_ = std::make_unique<QTemporaryDir>(
            QDir::temp().filePath(QStringLiteral("dov417-panel-XXXXXX")));
    if (!folder_->isValid())
        throw Failure(tr("no temporary folder: %1").arg(folder_->errorString()).toStdString());
    linked.link = folder_->filePath(QStringLiteral("controller")).toStdString();
    return linked;
}

void OwnController::follow(ControllerProcess* controller)
{
    controller_ = controller;
    report_.reset();
    if (!controller_)
        return;
    controller_->onReport([this](const ControllerReport& report) {
        report_ = std::make_shared<const ControllerReport>(report);
        if (came_)
            came_();
    });
    askReport();
}

void OwnController::setConditions(const simulator::Conditions& conditions)
{
    conditions_ = conditions;
    askReport();
}

void OwnController::askReport()
{
    if (controller_)
        controller_->setConditions(conditions_);
}

std::shared_ptr<const ControllerReport> OwnController::takeReport()
{
    return std::exchange(report_, nullptr);
}

} // namespace dov417
