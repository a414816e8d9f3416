// How a span looks: a colour that colour-blind people can tell apart, and a pattern and a height
// for whoever sees none.
#ifndef DOV417_PANEL_WIRE_LOOK_H
#define DOV417_PANEL_WIRE_LOOK_H

#include <QIcon>
#include <QPainter>
#include <QPalette>

#include "panel/frames/wire_shares.h"

namespace dov417 {

// Within the bar that is there for it.
void paintSpanLook(QPainter& painter, const QRectF& bar, SpanKind kind, SpanPurpose purpose,
                   const QPalette& palette);
QIcon iconOf(WireUse use, const QSize& size, const QPalette& palette);

} // namespace dov417

#endif
