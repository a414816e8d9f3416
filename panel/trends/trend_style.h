// How curves are told apart: by colours that are different for colour-blind people too, on light
// and on dark, and besides by a sign each, for who sees no colour at all.
#ifndef DOV417_PANEL_TREND_STYLE_H
#define DOV417_PANEL_TREND_STYLE_H

#include <QColor>
#include <QPalette>
#include <QPixmap>
#include <memory>
#include <qwt_symbol.h>

namespace dov417 {

QColor trendColour(int curve, const QPalette& palette);
// To be kept where many are drawn: it keeps its picture.
std::unique_ptr<QwtSymbol> trendSign(int curve, const QColor& colour, double side);
// A piece of the curve with its sign.
QPixmap trendSample(int curve, const QPalette& palette, const QSize& size);

} // namespace dov417

#endif
