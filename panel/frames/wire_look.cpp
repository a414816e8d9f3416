#include "panel/frames/wire_look.h"

#include <QPixmap>
#include <utility>

namespace dov417 {

namespace {

struct SpanLook {
    QColor colour;
    double ground;          // how much of it is below the pattern
    Qt::BrushStyle pattern; // in the colour
    double height;          // of the bar, from its foot
};

// Colours after Okabe and Ito.
const QColor requestBlue(0x00, 0x72, 0xB2);
const QColor replyOrange(0xE6, 0x9F, 0x00);
const QColor troubleRed(0xD5, 0x5E, 0x00);
const QColor strayPurple(0xCC, 0x79, 0xA7);

SpanLook lookOf(SpanKind kind, const QPalette& palette)
{
    const QColor& ink = palette.color(QPalette::Text);
    switch (kind) {
    case SpanKind::request:
        return {requestBlue, 1, Qt::SolidPattern, 1};
    case SpanKind::responseTime:
        return {ink, 0, Qt::Dense6Pattern, 0.4};
    case SpanKind::reply:
        return {replyOrange, 0.55, Qt::BDiagPattern, 1};
    case SpanKind::timeOut:
        return {troubleRed, 0.15, Qt::DiagCrossPattern, 0.7};
    case SpanKind::stray:
        return {strayPurple, 0.4, Qt::VerPattern, 1};
    case SpanKind::interFrame:
        return {ink, 0.3, Qt::NoBrush, 0.12};
    case SpanKind::idle:
        return {ink, 0, Qt::NoBrush, 0.12};
    case SpanKind::noLine:
        return {ink, 0.1, Qt::FDiagPattern, 1};
    case SpanKind::missing:
        return {ink, 0, Qt::Dense7Pattern, 1};
    }
    return {};
}

// What a use is shown as in a legend.
std::pair<SpanKind, SpanPurpose> sampleOf(WireUse use)
{
    switch (use) {
    case WireUse::requests:
        return {SpanKind::request, SpanPurpose::regular};
    case WireUse::responseTime:
        return {SpanKind::responseTime, SpanPurpose::regular};
    case WireUse::replies:
        return {SpanKind::reply, SpanPurpose::regular};
    case WireUse::interFrame:
        return {SpanKind::interFrame, SpanPurpose::regular};
    case WireUse::idle:
        return {SpanKind::idle, SpanPurpose::regular};
    case WireUse::retries:
        return {SpanKind::request, SpanPurpose::retry};
    case WireUse::timeOuts:
        return {SpanKind::timeOut, SpanPurpose::regular};
    case WireUse::markers:
        return {SpanKind::request, SpanPurpose::marker};
    case WireUse::strays:
        return {SpanKind::stray, SpanPurpose::regular};
    case WireUse::noLine:
        return {SpanKind::noLine, SpanPurpose::regular};
    case WireUse::missing:
        return {SpanKind::missing, SpanPurpose::regular};
    }
    return {};
}

} // namespace

void paintSpanLook(QPainter& painter, const QRectF& bar, SpanKind kind, SpanPurpose purpose,
                   const QPalette& palette)
{
    const SpanLook look = lookOf(kind, palette);
    QRectF body = bar;
    body.setTop(bar.bottom() - bar.height() * look.height);
    QColor ground = look.colour;
    ground.setAlphaF(look.ground);
    if (look.ground > 0)
        painter.fillRect(body, ground);
    if (look.pattern != Qt::NoBrush)
        painter.fillRect(body, QBrush(look.colour, look.pattern));
    if (kind == SpanKind::reply || kind == SpanKind::timeOut || kind == SpanKind::stray) {
        painter.setPen(QPen(look.colour, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(body);
    }
    if (purpose == SpanPurpose::regular || kind == SpanKind::responseTime)
        return;
    // A roof tells what is beyond the regular: red and thick of what is sent again, dotted of a
    // check.
    const bool isRetry = purpose == SpanPurpose::retry;
    painter.setPen(QPen(isRetry ? troubleRed : palette.color(QPalette::Text), isRetry ? 3 : 2,
                        isRetry ? Qt::SolidLine : Qt::DotLine, Qt::FlatCap));
    painter.drawLine(body.topLeft(), body.topRight());
}

QIcon iconOf(WireUse use, const QSize& size, const QPalette& palette)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    const auto [kind, purpose] = sampleOf(use);
    paintSpanLook(painter, QRectF(1, 2, size.width() - 2, size.height() - 4), kind, purpose,
                  palette);
    painter.end();
    return QIcon(pixmap);
}

} // namespace dov417
