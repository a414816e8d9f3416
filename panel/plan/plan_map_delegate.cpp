#include "panel/plan/plan_map_delegate.h"

#include <QPainter>

#include "panel/plan/plan_map_model.h"

namespace dov417 {

namespace {

constexpr int bracketMargin = 2;
constexpr int bracketPen = 2;
constexpr int lip = 5; // of a bracket

void paintUse(QPainter* painter, const QRect& inside, const QPalette& palette, const PlanWord& word)
{
    const QColor& ink = palette.color(QPalette::Text);
    const QColor& full = palette.color(QPalette::Highlight);
    switch (word.use) {
    case WordUse::notAsked:
        break;
    case WordUse::watched:
        painter->fillRect(inside, full);
        break;
    case WordUse::readAlong:
        painter->fillRect(inside, QBrush(ink, Qt::BDiagPattern));
        break;
    case WordUse::uncovered:
        painter->setPen(ink);
        painter->drawRect(inside.adjusted(0, 0, -1, -1));
        painter->drawText(inside, Qt::AlignCenter, QStringLiteral("\u2717"));
        break;
    }
    if (!word.isBeyondLimit)
        return;
    painter->setPen(word.use == WordUse::watched ? palette.color(QPalette::HighlightedText) : ink);
    painter->drawText(inside, Qt::AlignCenter, QStringLiteral("!"));
}

} // namespace

void paintWord(QPainter* painter, const QRect& place, const QPalette& palette, const PlanWord& word)
{
    const QRect inside = place.adjusted(1, 2 * bracketMargin, -1, -2 * bracketMargin);
    const QRect outer = place.adjusted(0, bracketMargin - 1, -1, -bracketMargin);
    const QColor& ink = palette.color(QPalette::Text);
    // Filled, as lines are drawn pixel by pixel, and there are hundreds of words.
    const auto fill = [painter, &ink](int x, int y, int width, int height) {
        painter->fillRect(x, y, width, height, ink);
    };
    if (!word.requests.empty()) {
        fill(outer.left(), outer.top(), outer.width(), 1);
        fill(outer.left(), outer.bottom(), outer.width(), 1);
    }
    const int left = word.beginsRequest || word.beginsPart ? lip : 0;
    const int right = word.endsRequest ? lip : 0;
    paintUse(painter, inside.adjusted(left, 0, -right, 0), palette, word);
    const int left0 = outer.left() + bracketPen - bracketPen / 2;
    if (word.beginsRequest)
        fill(left0, outer.top(), bracketPen, outer.height());
    if (word.endsRequest)
        fill(outer.right() - 1 - bracketPen / 2, outer.top(), bracketPen, outer.height());
    if (word.beginsPart && !word.beginsRequest) {
        painter->setPen(QPen(ink, bracketPen, Qt::DotLine));
        painter->drawLine(outer.left() + bracketPen, outer.top(), outer.left() + bracketPen,
                          outer.bottom());
    }
}

void PlanMapDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const auto* const model = static_cast<const PlanMapModel*>(index.model());
    paintWord(painter, option.rect, option.palette, model->wordAt(index));
    const QColor ink = option.palette.color(QPalette::Text);
    // Words lie between this row and the one above that nothing is asked of.
    if (!model->rowAt(index.row()).goesOn && index.row() > 0) {
        painter->setPen(QPen(ink, 1, Qt::DashLine));
        painter->drawLine(option.rect.topLeft(), option.rect.topRight());
    }
    if ((option.state & QStyle::State_Selected) != 0) {
        painter->setPen(QPen(ink, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
}

} // namespace dov417
