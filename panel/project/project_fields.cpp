#include "panel/project/project_fields.h"

namespace dov417 {

OrderedJson typedNumber(const QString& text)
{
    const OrderedJson number = OrderedJson::parse(text.toStdString(), nullptr, false);
    return number.is_number() ? number : OrderedJson(text.toStdString());
}

QString fieldVerdict(const Failure& failure, const QString& before)
{
    const QString text = QString::fromUtf8(failure.what());
    const int at = text.indexOf(before);
    return at < 0 ? text : text.mid(at + before.size());
}

} // namespace dov417
