// What a controller takes to answer, on the page of the plan: typed, or as it was measured.
#include <algorithm>

#include "panel/plan/plan_page.h"

namespace dov417 {

namespace {

const char* const responseTimeMember = "responseTime";

QString answerText(Micros time)
{
    return QString::number(std::chrono::duration<double, std::milli>(time).count(), 'f', 1);
}

} // namespace

bool PlanPage::isTimeMeasured() const
{
    return responseTime_->value() == asMeasured;
}

// What the stations took to answer when they did last: the slowest of them. 0: none has answered.
Micros PlanPage::measuredTime() const
{
    Micros slowest(0);
    if (desk_.statistics())
        for (const StationTime& station : desk_.statistics()->stations)
            slowest = std::max(slowest, station.last);
    return slowest;
}

void PlanPage::showMeasured()
{
    const Micros time = measuredTime();
    const bool isKnown = time.count() > 0;
    if (!isTimeMeasured())
        measured_->setText(isKnown ? tr("On this line the slowest station took %1 ms, as it "
                                        "answered last.")
                                         .arg(answerText(time))
                                   : QString());
    else if (plannedTime_.count() > 0)
        measured_->setText(tr("Planned with %1 ms: so long took the slowest station on this line.")
                               .arg(answerText(plannedTime_)));
    else
        measured_->setText(
            tr("Nothing is measured yet: planned as if controllers answered at once."));
    if (isTimeMeasured() && isKnown && plannedTime_.count() == 0 && !isBusy())
        planAnew();
}

// ---- the project ----------------------------------------------------------------------------

std::string PlanPage::settingsName() const
{
    return "plan";
}

OrderedJson PlanPage::settings() const
{
    OrderedJson settings = OrderedJson::object();
    if (!isTimeMeasured())
        settings[responseTimeMember] = responseTime_->value();
    return settings;
}

std::function<void()> PlanPage::prepared(const OrderedJson& settings)
{
    if (!settings.contains(responseTimeMember))
        return [this]() { responseTime_->setValue(asMeasured); };
    const OrderedJson& time = settings.at(responseTimeMember);
    if (!time.is_number_integer() || time < 0 || time > maxMs)
        throw UsageFailure(std::string(responseTimeMember) +
                           ": is a number of milliseconds, 0 to " + std::to_string(maxMs));
    return [this, ms = time.get<int>()]() { responseTime_->setValue(ms); };
}

} // namespace dov417
