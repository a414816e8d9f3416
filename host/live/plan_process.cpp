#include "live/plan_process.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <nlohmann/json.hpp>
#include <utility>

#include "driver/debug_lines.h"
#include "line/failure.h"
#include "live/serial_format_json.h"

namespace nlohmann {

template <>
struct adl_serializer<std::chrono::microseconds> {
    static void to_json(json& record, std::chrono::microseconds time)
    {
        record = time.count();
    }
    static void from_json(const json& record, std::chrono::microseconds& time)
    {
        time = std::chrono::microseconds(record.get<std::chrono::microseconds::rep>());
    }
};

template <>
struct adl_serializer<QByteArray> { // in hex
    static void to_json(json& record, const QByteArray& bytes)
    {
        record = bytes.toHex().toStdString();
    }
    static void from_json(const json& record, QByteArray& bytes)
    {
        bytes = QByteArray::fromHex(QByteArray::fromStdString(record.get<std::string>()));
    }
};

} // namespace nlohmann

namespace dov417 {

using nlohmann::json;

// Without the names of its members, as there may be thousands of them and somebody waits.
inline void to_json(json& record, const Address& address)
{
    record = {address.station, address.regName, address.width, address.first, address.length};
}
inline void from_json(const json& record, Address& address)
{
    record.at(0).get_to(address.station);
    record.at(1).get_to(address.regName);
    record.at(2).get_to(address.width);
    record.at(3).get_to(address.first);
    record.at(4).get_to(address.length);
}

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PlanOrder, library, addresses, format, responseTime, gap,
                                   maxRegisters, stationMaxRegisters)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PlannedPart, address, length, bytes, replyLength, time)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PlannedRequest, station, regName, address, length, bytes,
                                   replyLength, time, parts)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Plan, requests, cycle)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(GapOutcome, firstGap, lastGap, requests, aboveLimit,
                                   uncoveredWords, cycle)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Stretch, station, regName, first, count)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(PlanReport, plan, uncovered, divided, outcomes)

namespace {

// What the child prints: one of these.
const char* const reportName = "report";
const char* const failureName = "failure";

PlanReport planned(const PlanOrder& order)
{
    const Library library(order.library);
    const Planner planner(library, order.addresses, order.format, order.responseTime,
                          order.maxRegisters, order.stationMaxRegisters);
    PlanReport report;
    report.plan = planner.plan(order.gap);
    report.uncovered = planner.uncovered(report.plan);
    report.divided = planner.divided(report.plan);
    report.outcomes = planner.outcomes();
    return report;
}

} // namespace

PlanProcess::PlanProcess(const PlanOrder& order, Done done, Failed failed)
    : done_(std::move(done)), failed_(std::move(failed))
{
    child_.onEnded([this]() { ended(); });
    child_.begin(planTask, json(order).dump());
}

void PlanProcess::ended()
{
    PlanReport report;
    std::string reason;
    try {
        const json answer = json::parse(child_.output());
        if (answer.contains(failureName))
            reason = answer.at(failureName).get<std::string>();
        else
            report = answer.at(reportName).get<PlanReport>();
    } catch (const json::exception&) {
        reason = "planning broke off: its process has ended";
    }
    // Whoever is told may destroy this.
    const Done done = std::move(done_);
    const Failed failed = std::move(failed_);
    if (reason.empty())
        done(report);
    else
        failed(reason);
}

int runPlanTask(const std::string& record, int /*socket*/)
{
    json answer;
    try {
        dropDebugLines();
        answer[reportName] = planned(json::parse(record).get<PlanOrder>());
    } catch (const std::exception& failure) {
        answer[failureName] = failure.what();
    }
    std::printf("%s\n", answer.dump().c_str());
    return answer.contains(reportName) ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace dov417
