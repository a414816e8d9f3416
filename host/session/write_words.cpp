#include "session/write_words.h"

namespace dov417 {

namespace {

std::string joined(const Item& item, const std::vector<unsigned char>& bytes)
{
    std::string text;
    for (const std::string& value :
         valueTexts(item.address.width, item.format, bytes.data(), valueCount(item.address)))
        text += (text.empty() ? "" : " ") + value;
    return withUnit(text, item.format);
}

} // namespace

WriteTask writeTask(const Item& item, const std::vector<std::string>& values)
{
    WriteTask task;
    task.item = item;
    try {
        requireCount(valueCount(item.address), values);
        task.data = valueBytes(item.address.width, item.format, values);
        requireWithinLimits(item, task.data);
    } catch (const UsageFailure& failure) {
        throw UsageFailure(item.name + ": " + failure.what());
    }
    return task;
}

std::string writeReport(const WriteTask& task, const std::string& interruption)
{
    std::string head = task.item.name + " = " + joined(task.item, task.data) + ": ";
    switch (task.result) {
    case WriteResult::confirmed:
        return head + "written and read back" +
               (task.before.empty() ? "" : ", was " + joined(task.item, task.before));
    case WriteResult::sent:
        return head + "sent to all stations; nobody confirms a broadcast";
    case WriteResult::refused:
        return head + "given up, NOT confirmed: " + task.reason;
    case WriteResult::unread:
        return head + "taken, but reading it back failed: " + task.reason;
    case WriteResult::different:
        return head + "taken, but it reads back as " + joined(task.item, task.after);
    case WriteResult::waiting:
        return head + "NOT confirmed: " + interruption;
    }
    return head;
}

} // namespace dov417
