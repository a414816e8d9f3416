#include "panel/trends/trend_notes.h"

#include <QDateTime>

#include "line/failure.h"

namespace dov417 {

namespace {

const char* const timeMember = "time";
const char* const textMember = "text";

// "2026-11-22T14:03:07.250Z". One without a zone would be another moment on another computer.
std::int64_t momentIn(const OrderedJson& note, const std::string& path)
{
    const auto found = note.find(timeMember);
    const QDateTime time =
        found == note.end() || !found->is_string()
            ? QDateTime()
            : QDateTime::fromString(QString::fromStdString(found->get<std::string>()),
                                    Qt::ISODateWithMs);
    if (!time.isValid() || time.timeSpec() == Qt::LocalTime)
        throw UsageFailure(memberPath(path, timeMember) +
                           ": a time with its zone is needed, 2026-11-22T14:03:07.250Z");
    return time.toMSecsSinceEpoch();
}

KeptNote keptNoteOf(const OrderedJson& json, const std::string& path)
{
    if (!json.is_object())
        throw UsageFailure(path + ": an object is needed");
    KeptNote note;
    note.at = momentIn(json, path);
    const auto text = json.find(textMember);
    if (text == json.end() || !text->is_string() || text->get<std::string>().empty())
        throw UsageFailure(memberPath(path, textMember) + ": a text is needed");
    note.text = text->get<std::string>();
    for (const auto& [name, member] : json.items())
        if (name != timeMember && name != textMember)
            note.others[name] = member;
    return note;
}

} // namespace

std::vector<KeptNote> keptNotesOf(const OrderedJson& list, const std::string& path)
{
    if (!list.is_array())
        throw UsageFailure(path + ": a list is needed");
    if (list.size() > maxKeptNotes)
        throw UsageFailure(path + ": no more than " + std::to_string(maxKeptNotes));
    std::vector<KeptNote> notes;
    notes.reserve(list.size());
    for (const OrderedJson& each : list)
        notes.push_back(keptNoteOf(each, elementPath(path, notes.size())));
    return notes;
}

OrderedJson toJson(const std::vector<KeptNote>& notes)
{
    OrderedJson list = OrderedJson::array();
    for (const KeptNote& note : notes) {
        const QDateTime time = QDateTime::fromMSecsSinceEpoch(note.at, Qt::UTC);
        OrderedJson json = {{timeMember, time.toString(Qt::ISODateWithMs).toStdString()},
                            {textMember, note.text}};
        json.update(note.others);
        list.push_back(json);
    }
    return list;
}

} // namespace dov417
