#include "live/controller_orders.h"

#include <nlohmann/json.hpp>

#include "line/failure.h"

namespace dov417 {

namespace simulator {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Conditions, faults, responseTimeMs, isOn, isPlugged);
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FaultCounts, replies, faulty, kinds);

} // namespace simulator

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ControllerReport, conditions, counts, refused);

namespace {

// Whoever sends bytes that are no text gets an answer that is.
std::string lineOf(const nlohmann::json& record)
{
    return record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

std::string toRecord(const simulator::Conditions& conditions)
{
    return lineOf(conditions);
}

ControllerReport parseControllerReport(const std::string& line)
{
    try {
        return nlohmann::json::parse(line).get<ControllerReport>();
    } catch (const nlohmann::json::exception& exception) {
        throw Failure(std::string("no report of a controller: ") + exception.what());
    }
}

std::string obey(simulator::Simulation& simulation, const std::string& line)
{
    ControllerReport report;
    try {
        simulation.setConditions(nlohmann::json::parse(line).get<simulator::Conditions>());
    } catch (const nlohmann::json::exception& exception) {
        report.refused = std::string("no conditions of a controller: ") + exception.what();
    } catch (const Failure& failure) {
        report.refused = failure.what();
    }
    report.conditions = simulation.conditions();
    report.counts = simulation.faultCounts();
    return lineOf(report);
}

} // namespace dov417
