#include "frame_record.h"

#include "recorded_session.h"

namespace dov417 {

namespace {

// What is as in a new one is not written.
template <typename Value>
void put(OrderedJson& record, const char* name, const Value& value, const Value& usual = Value())
{
    if (value != usual)
        record[name] = value;
}

template <typename Value>
void take(const OrderedJson& record, const char* name, Value& value)
{
    if (const auto member = record.find(name); member != record.end())
        value = member->get<Value>();
}

template <typename Choice>
void takeChoice(const OrderedJson& record, const char* name, Choice& choice)
{
    int number = static_cast<int>(choice);
    take(record, name, number);
    choice = static_cast<Choice>(number);
}

void takeTime(const OrderedJson& record, const char* name, Clock::time_point& time)
{
    long long micros = sinceBegin(time);
    take(record, name, micros);
    time = fromBegin(micros);
}

void takeBytes(const OrderedJson& record, const char* name, QByteArray& bytes)
{
    std::string hex;
    take(record, name, hex);
    bytes = bytesOf(hex);
}

// What is the same each time that this is asked.
OrderedJson requestRecord(const Transmission& transmission)
{
    const Request& request = transmission.request;
    OrderedJson record{{"station", request.station}};
    put(record, "kind", request.kind);
    put(record, "register", request.regName);
    put(record, "address", request.address);
    put(record, "length", request.length);
    put(record, "sent", hexOf(transmission.sent));
    put(record, "due", transmission.replyLength);
    put(record, "cyclic", transmission.isCyclic);
    put(record, "timeout", static_cast<long long>(transmission.timeout.count()));
    put(record, "words", transmission.description);
    return record;
}

Transmission requestOf(const OrderedJson& record)
{
    Transmission transmission;
    Request& request = transmission.request;
    take(record, "station", request.station);
    take(record, "kind", request.kind);
    take(record, "register", request.regName);
    take(record, "address", request.address);
    take(record, "length", request.length);
    takeBytes(record, "sent", transmission.sent);
    take(record, "due", transmission.replyLength);
    take(record, "cyclic", transmission.isCyclic);
    long long timeout = 0;
    take(record, "timeout", timeout);
    transmission.timeout = Micros(timeout);
    take(record, "words", transmission.description);
    return transmission;
}

void putEnd(OrderedJson& record, const Transmission& transmission)
{
    const Reception& reception = transmission.reception;
    put(record, "repeats", transmission.repeats);
    put(record, "silent", transmission.isToSilent);
    put(record, "local", transmission.isLocal);
    put(record, "marker", transmission.isMarker);
    put(record, "begin", sinceBegin(transmission.sendBegin));
    put(record, "end", sinceBegin(transmission.sendEnd));
    put(record, "result", static_cast<int>(reception.result));
    put(record, "reply", hexOf(reception.bytes));
    put(record, "first", sinceBegin(reception.firstByte));
    put(record, "last", sinceBegin(reception.lastByte));
    put(record, "noise", reception.astray.noise);
    put(record, "asOf", sinceBegin(transmission.asOf), sinceBegin(reception.lastByte));
    put(record, "verdict", static_cast<int>(transmission.verdict), static_cast<int>(replyAccepted));
    put(record, "why", static_cast<int>(transmission.why));
    put(record, "reason", transmission.reason);
}

void takeEnd(const OrderedJson& record, Transmission& transmission)
{
    Reception& reception = transmission.reception;
    take(record, "repeats", transmission.repeats);
    take(record, "silent", transmission.isToSilent);
    take(record, "local", transmission.isLocal);
    take(record, "marker", transmission.isMarker);
    takeTime(record, "begin", transmission.sendBegin);
    takeTime(record, "end", transmission.sendEnd);
    reception.result = LineResult::reply;
    takeChoice(record, "result", reception.result);
    takeBytes(record, "reply", reception.bytes);
    takeTime(record, "first", reception.firstByte);
    takeTime(record, "last", reception.lastByte);
    take(record, "noise", reception.astray.noise);
    transmission.asOf = reception.lastByte;
    takeTime(record, "asOf", transmission.asOf);
    int verdict = replyAccepted;
    take(record, "verdict", verdict);
    transmission.verdict = static_cast<ReplyResult>(verdict);
    takeChoice(record, "why", transmission.why);
    take(record, "reason", transmission.reason);
}

} // namespace

long long sinceBegin(Clock::time_point time)
{
    if (time == Clock::time_point())
        return 0;
    return std::chrono::duration_cast<Micros>(time - RecordedSession::begin).count();
}

Clock::time_point fromBegin(long long micros)
{
    return micros == 0 ? Clock::time_point() : RecordedSession::begin + Micros(micros);
}

std::string hexOf(const QByteArray& bytes)
{
    return bytes.toHex().toStdString();
}

QByteArray bytesOf(const std::string& hex)
{
    return QByteArray::fromHex(QByteArray::fromStdString(hex));
}

Transmission begunOf(Transmission transmission)
{
    const Transmission none;
    transmission.reception = none.reception;
    transmission.asOf = none.asOf;
    transmission.verdict = none.verdict;
    transmission.description = none.description;
    transmission.why = none.why;
    transmission.reason = none.reason;
    return transmission;
}

OrderedJson FrameRecords::ended(const Transmission& transmission)
{
    OrderedJson record{{"number", transmission.number}};
    const OrderedJson request = requestRecord(transmission);
    const auto [first, isNew] = numbers_.try_emplace(request.dump(), transmission.number);
    if (isNew)
        record["request"] = request;
    else
        record["as"] = first->second;
    putEnd(record, transmission);
    return record;
}

Transmission FrameRecords::ended(const OrderedJson& record)
{
    const long long number = record.at("number").get<long long>();
    if (record.contains("request"))
        requests_[number] = record.at("request");
    Transmission transmission = requestOf(requests_.at(record.value("as", number)));
    transmission.number = number;
    takeEnd(record, transmission);
    return transmission;
}

OrderedJson FrameRecords::record(const Passed& passed)
{
    OrderedJson record{{"at", sinceBegin(passed.at)}};
    put(record, "cycle", passed.cycle);
    switch (passed.what) {
    case Passed::What::began:
        record["began"] = passed.transmission.number;
        break;
    case Passed::What::ended:
        record["ended"] = ended(passed.transmission);
        break;
    case Passed::What::stray:
        record["stray"] = static_cast<int>(passed.stray.kind);
        record["bytes"] = hexOf(passed.stray.bytes);
        record["came"] = sinceBegin(passed.stray.at);
        put(record, "answers", passed.stray.answers);
        break;
    case Passed::What::note:
        record["note"] = passed.text;
        break;
    }
    return record;
}

Passed FrameRecords::passed(const OrderedJson& record)
{
    Passed passed;
    takeTime(record, "at", passed.at);
    take(record, "cycle", passed.cycle);
    if (record.contains("began")) {
        passed.what = Passed::What::began;
        take(record, "began", passed.transmission.number);
    } else if (record.contains("ended")) {
        passed.what = Passed::What::ended;
        passed.transmission = ended(record.at("ended"));
    } else if (record.contains("stray")) {
        passed.what = Passed::What::stray;
        takeChoice(record, "stray", passed.stray.kind);
        takeBytes(record, "bytes", passed.stray.bytes);
        takeTime(record, "came", passed.stray.at);
        take(record, "answers", passed.stray.answers);
    } else {
        take(record, "note", passed.text);
    }
    return passed;
}

} // namespace dov417
