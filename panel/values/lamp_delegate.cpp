#include "panel/values/lamp_delegate.h"

#include <QApplication>
#include <QPainter>
#include <algorithm>

#include "panel/desk/state_words.h"
#include "panel/values/lamps_model.h"

namespace dov417 {

namespace {

// Seen on light and on dark; and whoever does not see it reads the 1.
const QColor lit(0xF2, 0xB1, 0x0C);

} // namespace

QStringList lampNameParts(const QString& name, const QFontMetrics& metrics, int width)
{
    QStringList best{name};
    int least = metrics.horizontalAdvance(name);
    for (const bool anywhere : {false, true}) {
        if (least <= width)
            break;
        for (int end = 1; end < name.size(); ++end) {
            if (!anywhere && !QStringLiteral("._- ").contains(name.at(end - 1)))
                continue;
            const QStringList halves{name.left(end), name.mid(end)};
            const int longest = std::max(metrics.horizontalAdvance(halves.front()),
                                         metrics.horizontalAdvance(halves.back()));
            if (longest < least && (!anywhere || longest <= width)) {
                least = longest;
                best = halves;
            }
        }
    }
    return best;
}

void LampDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    const auto* const model = static_cast<const LampsModel*>(index.model());
    if (!model->valueAt(index))
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QPalette& palette = option.palette;
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    if (isSelected)
        painter->fillRect(option.rect, palette.color(QPalette::Highlight));
    const QColor ink = palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);

    const ValueStanding standing = model->standingAt(index);
    const std::optional<bool> on = model->isOn(index);
    const bool isGood = standing.state == ValueState::good;
    const int line = option.fontMetrics.height();
    const int diameter = line + line / 2;
    const QRectF ring(option.rect.center().x() - diameter / 2.0, option.rect.top() + 4, diameter,
                      diameter);
    painter->setPen(QPen(ink, isGood ? 1.5 : 1.2, isGood ? Qt::SolidLine : Qt::DotLine));
    const bool isLit = on.value_or(false);
    painter->setBrush(isLit && isGood ? QBrush(lit)
                      : isLit         ? QBrush(lit, Qt::Dense5Pattern)
                                      : QBrush(Qt::NoBrush));
    painter->drawEllipse(ring);
    painter->setPen(isLit && isGood ? QColor(Qt::black) : ink);
    painter->drawText(ring, Qt::AlignCenter,
                      !on     ? QStringLiteral("?")
                      : isLit ? QStringLiteral("1")
                              : QStringLiteral("0"));
    painter->setPen(ink);
    if (!isGood && on)
        painter->drawText(QRectF(ring.right() + 1, ring.top(), line, line), Qt::AlignCenter,
                          symbolOf(standing.state));
    QRect below(option.rect.left() + 2, static_cast<int>(ring.bottom()) + 2,
                option.rect.width() - 4, line);
    for (const QString& part :
         lampNameParts(index.data().toString(), option.fontMetrics, below.width())) {
        painter->drawText(below, Qt::AlignCenter,
                          option.fontMetrics.elidedText(part, Qt::ElideRight, below.width()));
        below.translate(0, line);
    }
    if ((option.state & QStyle::State_HasFocus) != 0) {
        painter->setBrush(Qt::NoBrush);
        painter->setPen(QPen(ink, 1, Qt::DashLine));
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    painter->restore();
}

QSize LampDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    const int line = option.fontMetrics.height();
    return {line * 4, line * lines + 4};
}

} // namespace dov417
