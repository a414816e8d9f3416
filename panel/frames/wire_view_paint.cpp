// How the view looks.
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <map>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_text.h>
#include <utility>

#include "panel/frames/wire_look.h"
#include "panel/frames/wire_view.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

// Milliseconds with their unit.
class MillisecondScale : public QwtScaleDraw {
public:
    QwtText label(double value) const override
    {
        return WireView::tr("%1 ms").arg(value);
    }
};

double scaleValue(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace

// ---- painting -------------------------------------------------------------------------------

void WireView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Text));
    const QString empty = emptyText();
    if (!empty.isEmpty()) {
        painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap,
                         empty);
    } else {
        paintScale(painter);
        paintLanes(painter);
        paintCycles(painter);
        paintNames(painter);
        paintCurrent(painter);
        paintRulers(painter);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

QString WireView::emptyText() const
{
    if (times_->frames().empty() && isRecording_)
        return tr("This recording holds no request, so there is nothing to draw.");
    if (times_->frames().empty())
        return tr("Nothing has passed on the line yet. Once a line is open and values are watched, "
                  "each request and its reply are drawn here to scale.");
    if (to_ <= times_->begin())
        return tr("What stood here is too long ago: it is not kept any more. End, or Follow the "
                  "line, leads back.");
    return QString();
}

void WireView::paintScale(QPainter& painter) const
{
    const double first = scaleValue(zero_, from_);
    const double last = scaleValue(zero_, to_);
    const int room = fontMetrics().horizontalAdvance(QStringLiteral("00000.000 ms"));
    const int steps = std::max(2, (width() - left()) / std::max(1, room));
    MillisecondScale scale;
    scale.setAlignment(QwtScaleDraw::TopScale);
    scale.setScaleDiv(QwtLinearScaleEngine().divideScale(first, last, steps, 5));
    scale.move(left(), fontMetrics().height() * 2);
    scale.setLength(width() - left() - right());
    painter.setFont(font());
    scale.draw(&painter, palette());
}

// Where cycles begin, and how long they took.
void WireView::paintCycles(QPainter& painter) const
{
    const auto& cycles = times_->cycles();
    auto begin = std::lower_bound(cycles.begin(), cycles.end(), from_);
    if (begin != cycles.begin())
        --begin;
    const int y = fontMetrics().height() * 2 + spaceAround;
    QColor ink = palette().color(QPalette::Text);
    double painted = -1;
    for (; begin != cycles.end() && *begin <= to_; ++begin) {
        const double x = xOf(*begin);
        if (x - painted < 2)
            continue;
        painted = x;
        painter.setPen(QPen(ink, 1, Qt::DashLine));
        if (x >= left())
            painter.drawLine(QPointF(x, y), QPointF(x, height() - spaceAround));
        if (begin + 1 == cycles.end())
            break;
        const double end = std::min<double>(xOf(*(begin + 1)), width() - right());
        const double from = std::max<double>(x, left());
        const QString text = tr("a cycle: %1").arg(wireTimeText(*(begin + 1) - *begin));
        if (fontMetrics().horizontalAdvance(text) + 2 * spaceAround > end - from)
            continue;
        painter.setPen(ink);
        painter.drawText(QRectF(from, y, end - from, fontMetrics().height()), Qt::AlignCenter,
                         text);
    }
}

void WireView::paintLanes(QPainter& painter) const
{
    const QColor ink = palette().color(QPalette::Text);
    QColor pale = ink;
    pale.setAlphaF(0.3);
    int row = 0;
    const auto name = [&](const QString& text) {
        const QRect place = lane(row++);
        painter.setPen(ink);
        painter.drawText(QRect(spaceAround, place.top(), left() - 2 * spaceAround, place.height()),
                         Qt::AlignRight | Qt::AlignVCenter, text);
        painter.setPen(pale);
        painter.drawLine(place.left(), place.bottom() - spaceAround, place.right(),
                         place.bottom() - spaceAround);
    };
    name(tr("the line"));
    for (const int station : times_->stations())
        name(laneName(station));
    painter.save();
    painter.setClipRect(QRect(left(), 0, width() - left() - right(), height()));
    std::vector<double> painted(times_->stations().size() + 1,
                                -1e9); // so far to the right, in each lane
    const auto& spans = times_->spans();
    for (std::size_t i = times_->spanAt(from_); i < spans.size() && spans[i].begin < to_; ++i)
        paintSpan(painter, spans[i], painted);
    for (const WireSpan& span : times_->underWay(std::min(now_, to_)))
        paintSpan(painter, span, painted);
    painter.restore();
}

// What is smaller than a pixel is drawn as one, once.
void WireView::paintSpan(QPainter& painter, const WireSpan& span,
                         std::vector<double>& painted) const
{
    const bool isTrouble = span.kind == SpanKind::timeOut || span.kind == SpanKind::stray ||
                           span.purpose == SpanPurpose::retry;
    const double begin = std::max<double>(xOf(span.begin), left() - 2);
    const double end = std::min<double>(xOf(span.end), width() + 2);
    std::vector<int> lanes = {0};
    if (span.station >= 0 && times_->stations().count(span.station) > 0)
        lanes.push_back(laneOf(span.station));
    for (const int row : lanes) {
        double& right = painted.at(static_cast<std::size_t>(row));
        if (end <= right && !isTrouble)
            continue;
        right = std::max(std::floor(begin) + 1, end);
        const QRect place = lane(row);
        const double top =
            place.top() + spaceAround + (row == 0 ? 0 : nameRows() * fontMetrics().height());
        paintSpanLook(
            painter,
            QRectF(begin, top, std::max(1.0, end - begin), place.bottom() - spaceAround - top),
            span.kind, span.purpose, palette());
    }
}

// In two rows above the bars, each as far as the one before it in its row leaves room.
void WireView::paintNames(QPainter& painter) const
{
    const int line = fontMetrics().height();
    const int rows = nameRows();
    if (rows == 0)
        return;
    painter.setPen(palette().color(QPalette::Text));
    std::map<std::pair<int, int>, double> taken; // by lane and row
    const auto& frames = times_->frames();
    for (std::size_t i = times_->placeAt(from_).value_or(0);
         i < frames.size() && frames[i].begin < to_; ++i) {
        const WireFrame& frame = frames[i];
        const int row = laneOf(frame.told.request.station);
        const double begin = std::max<double>(xOf(frame.begin), left());
        bool hasRoom = false;
        for (int nameRow = 0; nameRow < rows; ++nameRow)
            hasRoom = hasRoom || begin >= taken[{row, nameRow}];
        if (!hasRoom)
            continue; // before its text is made: there may be thousands
        const bool isBad =
            frame.hasEnded && frame.told.why != Reason::none && frame.told.why != Reason::broadcast;
        const QString text =
            (isBad ? QStringLiteral("\u2717 ") : QString()) + shortFrameText(frame.told, areas_);
        const double end = begin + fontMetrics().horizontalAdvance(text);
        if (xOf(frame.end) <= left() || end > width())
            continue;
        for (int nameRow = 0; nameRow < rows; ++nameRow) {
            double& right = taken[{row, nameRow}];
            if (begin < right)
                continue;
            right = end + spaceAround;
            const double foot = lane(row).top() + spaceAround + line * nameRow;
            painter.drawText(QPointF(begin, foot + fontMetrics().ascent()), text);
            break;
        }
    }
}

void WireView::paintCurrent(QPainter& painter) const
{
    const WireFrame* const frame = times_->find(current_);
    if (!frame || frame->begin > to_ || frame->end < from_)
        return;
    const double begin = std::max<double>(xOf(frame->begin), left());
    const double end = std::min<double>(xOf(frame->end), width() - right());
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    for (const int row : {0, laneOf(frame->told.request.station)}) {
        const QRect place = lane(row);
        painter.drawRect(QRectF(begin - 2, place.top() + 1, std::max(2.0, end - begin) + 4,
                                place.height() - spaceAround));
    }
}

void WireView::paintRulers(QPainter& painter) const
{
    const QColor ink = palette().color(QPalette::Text);
    for (const WireRuler each : {WireRuler::a, WireRuler::b}) {
        if (!ruler(each) || *ruler(each) < from_ || *ruler(each) > to_)
            continue;
        const double x = xOf(*ruler(each));
        const int y = fontMetrics().height() * 3 + spaceAround;
        painter.setPen(QPen(ink, 2, each == WireRuler::a ? Qt::SolidLine : Qt::DashDotLine));
        painter.drawLine(QPointF(x, y), QPointF(x, height()));
        const QRectF flag(x, y, fontMetrics().height(), fontMetrics().height());
        painter.fillRect(flag, ink);
        painter.setPen(palette().color(QPalette::Base));
        painter.drawText(flag, Qt::AlignCenter,
                         each == WireRuler::a ? QStringLiteral("A") : QStringLiteral("B"));
    }
}

} // namespace dov417
