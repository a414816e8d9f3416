#include "recorded_session.h"

#include <fstream>
#include <map>
#include <unordered_map>

#include "frame_record.h"
#include "line/replace_file.h"

namespace dov417 {

namespace {

// ---- values ---------------------------------------------------------------------------------

bool isSameButForTime(const View& a, const View& b)
{
    return a.hasValue == b.hasValue && a.isOld == b.isOld && a.writes == b.writes &&
           a.value == b.value && a.changes == b.changes && a.lapses == b.lapses &&
           a.lastChange == b.lastChange;
}

QByteArray toByteArray(const ValueBytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

ValueBytes toValueBytes(const QByteArray& bytes)
{
    return ValueBytes(bytes.begin(), bytes.end());
}

// What is known of each value so far, at either side: a record holds what is new of it.
class ViewsSoFar {
public:
    explicit ViewsSoFar(const std::vector<Address>& values)
    {
        for (const Address& address : values) {
            places_.emplace(address, views_.size());
            views_.emplace_back().address = address;
        }
    }

    void write(const std::vector<View>& views, OrderedJson& record)
    {
        OrderedJson changed = OrderedJson::array();
        std::map<long long, std::vector<std::size_t>> confirmed;
        for (const View& view : views) {
            const std::size_t place = places_.at(view.address);
            View& before = views_.at(place);
            if (!isSameButForTime(view, before))
                changed.push_back({place, view.hasValue, view.isOld, view.writes,
                                   hexOf(toByteArray(view.value)), view.changes, view.lapses,
                                   sinceBegin(view.lastGood), sinceBegin(view.lastChange)});
            else if (view.lastGood != before.lastGood)
                confirmed[sinceBegin(view.lastGood)].push_back(place);
            before = view;
        }
        if (!changed.empty())
            record["values"] = changed;
        if (!confirmed.empty())
            for (const auto& [when, places] : confirmed)
                record["good"].push_back({when, places});
    }

    std::vector<View> read(const OrderedJson& record)
    {
        std::vector<View> news;
        for (const OrderedJson& each : record.value("values", OrderedJson::array())) {
            View& view = views_.at(each.at(0).get<std::size_t>());
            const ValueBytes value = toValueBytes(bytesOf(each.at(4).get<std::string>()));
            if (value != view.value)
                view.previous = view.value;
            view.hasValue = each.at(1).get<bool>();
            view.isOld = each.at(2).get<bool>();
            view.writes = each.at(3).get<int>();
            view.value = value;
            view.changes = each.at(5).get<long long>();
            view.lapses = each.at(6).get<long long>();
            view.lastGood = fromBegin(each.at(7).get<long long>());
            view.lastChange = fromBegin(each.at(8).get<long long>());
            news.push_back(view);
        }
        for (const OrderedJson& each : record.value("good", OrderedJson::array()))
            for (const OrderedJson& place : each.at(1)) {
                View& view = views_.at(place.get<std::size_t>());
                view.lastGood = fromBegin(each.at(0).get<long long>());
                news.push_back(view);
            }
        return news;
    }

private:
    std::vector<View> views_;
    std::unordered_map<Address, std::size_t, AddressHash> places_;
};

// ---- the line -------------------------------------------------------------------------------

OrderedJson stateRecord(const LineState& state)
{
    return {static_cast<int>(state.phase),
            state.isSimulated,
            state.isUnlocked,
            state.isGood,
            state.port,
            state.wire,
            state.reason,
            state.cycles,
            state.cycle.count(),
            state.writesUnderWay};
}

LineState stateOf(const OrderedJson& record)
{
    LineState state;
    state.phase = static_cast<LinePhase>(record.at(0).get<int>());
    state.isSimulated = record.at(1).get<bool>();
    state.isUnlocked = record.at(2).get<bool>();
    state.isGood = record.at(3).get<bool>();
    state.port = record.at(4).get<std::string>();
    state.wire = record.at(5).get<std::string>();
    state.reason = record.at(6).get<std::string>();
    state.cycles = record.at(7).get<long long>();
    state.cycle = Micros(record.at(8).get<long long>());
    state.writesUnderWay = record.at(9).get<std::size_t>();
    return state;
}

// What is not counted from frames and cycles.
OrderedJson statisticsRecord(const LinkStatistics& statistics)
{
    OrderedJson stations = OrderedJson::array();
    for (const StationTime& each : statistics.stations)
        stations.push_back(
            {each.station, each.last.count(), each.slowest.count(), each.timeout.count()});
    return {sinceBegin(statistics.started), statistics.portLosses, statistics.wireTime.count(),
            stations};
}

void takeStatistics(const OrderedJson& record, LinkStatistics& statistics)
{
    statistics.started = fromBegin(record.at(0).get<long long>());
    statistics.portLosses = record.at(1).get<long long>();
    statistics.wireTime = Micros(record.at(2).get<long long>());
    statistics.stations.clear();
    for (const OrderedJson& each : record.at(3))
        statistics.stations.push_back({each.at(0).get<int>(), Micros(each.at(1).get<long long>()),
                                       Micros(each.at(2).get<long long>()),
                                       Micros(each.at(3).get<long long>())});
}

OrderedJson reportRecord(const ControllerReport& report)
{
    const simulator::Conditions& conditions = report.conditions;
    return {conditions.faults,    conditions.responseTimeMs, conditions.isOn,
            conditions.isPlugged, report.counts.replies,     report.counts.faulty,
            report.counts.kinds};
}

ControllerReport reportOf(const OrderedJson& record)
{
    ControllerReport report;
    report.conditions.faults = record.at(0).get<std::vector<std::string>>();
    report.conditions.responseTimeMs = record.at(1).get<int>();
    report.conditions.isOn = record.at(2).get<bool>();
    report.conditions.isPlugged = record.at(3).get<bool>();
    report.counts.replies = record.at(4).get<std::uint64_t>();
    report.counts.faulty = record.at(5).get<std::uint64_t>();
    report.counts.kinds = record.at(6).get<std::map<std::string, std::uint64_t>>();
    return report;
}

// ---- batches --------------------------------------------------------------------------------

OrderedJson batchRecord(const LineBatch& batch, const LineState& before, ViewsSoFar& views,
                        FrameRecords& frames)
{
    OrderedJson record{{"made", sinceBegin(batch.made)}};
    if (const OrderedJson state = stateRecord(batch.state); state != stateRecord(before))
        record["state"] = state;
    views.write(batch.values, record);
    for (const Passed& passed : batch.passed)
        record["passed"].push_back(frames.record(passed));
    for (const WriteOutcome& outcome : batch.outcomes)
        record["outcomes"].push_back(
            {outcome.number, outcome.result.accepted, outcome.result.reason});
    if (batch.statistics)
        record["statistics"] = statisticsRecord(*batch.statistics);
    if (batch.controller)
        record["controller"] = reportRecord(*batch.controller);
    return record;
}

// Reads batch by batch, and counts what is counted.
class BatchReader {
public:
    explicit BatchReader(const std::vector<Address>& values) : views_(values) {}

    LineBatch read(const OrderedJson& record)
    {
        LineBatch batch;
        batch.made = fromBegin(record.at("made").get<long long>());
        if (record.contains("state"))
            takeState(stateOf(record.at("state")));
        batch.state = state_;
        batch.values = views_.read(record);
        for (const OrderedJson& each : record.value("passed", OrderedJson::array())) {
            batch.passed.push_back(frames_.passed(each));
            count(batch.passed.back());
        }
        for (const OrderedJson& each : record.value("outcomes", OrderedJson::array())) {
            WriteOutcome outcome;
            outcome.number = each.at(0).get<long long>();
            outcome.result.accepted = each.at(1).get<bool>();
            outcome.result.reason = each.at(2).get<std::string>();
            batch.outcomes.push_back(outcome);
        }
        if (record.contains("statistics")) {
            takeStatistics(record.at("statistics"), statistics_);
            statistics_.portIsOpen = state_.phase == LinePhase::open;
            batch.statistics = std::make_shared<const LinkStatistics>(statistics_);
        }
        if (record.contains("controller"))
            batch.controller =
                std::make_shared<const ControllerReport>(reportOf(record.at("controller")));
        return batch;
    }

private:
    void takeState(const LineState& state)
    {
        if (state.cycles > state_.cycles)
            statistics_.cycles.add(state.cycle);
        state_ = state;
    }

    void count(const Passed& passed)
    {
        if (passed.what == Passed::What::ended && !passed.transmission.isMarker)
            statistics_.add(passed.transmission);
        if (passed.what == Passed::What::stray)
            statistics_.add(passed.stray);
    }

    ViewsSoFar views_;
    FrameRecords frames_;
    LineState state_;
    LinkStatistics statistics_;
};

// A frame is written where it ends; what was known when it began is a part of that.
void fillBegun(std::vector<LineBatch>& batches)
{
    std::map<long long, Transmission> ended;
    for (const LineBatch& batch : batches)
        for (const Passed& passed : batch.passed)
            if (passed.what == Passed::What::ended)
                ended[passed.transmission.number] = begunOf(passed.transmission);
    for (LineBatch& batch : batches) {
        std::vector<Passed> told;
        for (Passed& passed : batch.passed) {
            if (passed.what == Passed::What::began) {
                const auto end = ended.find(passed.transmission.number);
                if (end == ended.end())
                    continue; // was under way when the recording ended
                passed.transmission = end->second;
            }
            told.push_back(passed);
        }
        batch.passed = told;
    }
}

} // namespace

void saveSession(const std::string& file, const RecordedSession& session,
                 const std::vector<Address>& values)
{
    std::string text = OrderedJson{{"began", session.timeOfDay}}.dump() + '\n';
    for (const RecordedWrite& write : session.writes)
        text.append(OrderedJson{
                        {"write", sinceBegin(write.at)}, {"name", write.name}, {"text", write.text}}
                        .dump())
            .append("\n");
    ViewsSoFar views(values);
    FrameRecords frames;
    LineState before;
    for (const LineBatch& batch : session.batches) {
        text.append(batchRecord(batch, before, views, frames).dump()).append("\n");
        before = batch.state;
    }
    QString error;
    if (!replaceFile(QString::fromStdString(file), QByteArray::fromStdString(text), &error))
        throw Failure("cannot write " + file + ": " + error.toStdString());
}

RecordedSession loadSession(const std::string& file, const std::vector<Address>& values)
{
    std::ifstream stream(file);
    if (!stream)
        throw Failure("cannot read " + file);
    RecordedSession session;
    BatchReader reader(values);
    std::string line;
    int number = 0;
    try {
        while (std::getline(stream, line)) {
            ++number;
            const OrderedJson record = OrderedJson::parse(line);
            if (record.contains("began"))
                session.timeOfDay = record.at("began").get<std::string>();
            else if (record.contains("write"))
                session.writes.push_back({fromBegin(record.at("write").get<long long>()),
                                          record.at("name").get<std::string>(),
                                          record.at("text").get<std::string>()});
            else
                session.batches.push_back(reader.read(record));
        }
    } catch (const std::exception& mistake) {
        throw Failure(file + ":" + std::to_string(number) + ": " + mistake.what());
    }
    fillBegun(session.batches);
    return session;
}

} // namespace dov417
