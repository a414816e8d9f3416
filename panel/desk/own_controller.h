// The own controller as the line's thread has it: its port under a name that stays while the cable
// is pulled, what it is told, and what it reports. All of it in that thread.
#ifndef DOV417_PANEL_OWN_CONTROLLER_H
#define DOV417_PANEL_OWN_CONTROLLER_H

#include <QCoreApplication>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "live/controller_process.h"

namespace dov417 {

class OwnController {
    Q_DECLARE_TR_FUNCTIONS(OwnController)

public:
    // Called for each report.
    void onReport(std::function<void()> came);

    // The same, with a link in a folder of our own. Throws a Failure where there is no such folder.
    simulator::SimulationOptions linked(const simulator::SimulationOptions& options);
    // Null: there is none any more.
    void follow(ControllerProcess* controller);

    void setConditions(const simulator::Conditions& conditions);
    void askReport();
    // The last one that was not taken yet; else null.
    std::shared_ptr<const ControllerReport> takeReport();

private:
    std::function<void()> came_;
    std::unique_ptr<QTemporaryDir> folder_;
    ControllerProcess* controller_ = nullptr;
    simulator::Conditions conditions_; // that it is to work under
    std::shared_ptr<const ControllerReport> report_;
};

} // namespace dov417

#endif
