#include "panel/trends/trend_style.h"

#include <QPainter>
#include <array>

namespace dov417 {

namespace {

// Okabe and Ito's eight, but for the yellow on light and the dark ones on dark.
const std::array<QRgb, 7> coloursOnLight = {0xFF0072B2, 0xFFD55E00, 0xFF007A5A, 0xFFB0508C,
                                            0xFF222222, 0xFF6B5200, 0xFF3A9AD9};
const std::array<QRgb, 7> coloursOnDark = {0xFF56B4E9, 0xFFFF9D4D, 0xFF2FC79A, 0xFFE39CC4,
                                           0xFFFFFFFF, 0xFFF0E442, 0xFF6F8FFF};
const std::array<QwtSymbol::Style, 8> signs = {
    QwtSymbol::Ellipse, QwtSymbol::Rect,      QwtSymbol::UTriangle, QwtSymbol::Diamond,
    QwtSymbol::XCross,  QwtSymbol::DTriangle, QwtSymbol::Star1,     QwtSymbol::Cross,
};

constexpr int middleLightness = 128;

} // namespace

QColor trendColour(int curve, const QPalette& palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < middleLightness;
    const auto place = static_cast<std::size_t>(curve) % coloursOnLight.size();
    return QColor((isDark ? coloursOnDark : coloursOnLight).at(place));
}

// Seven colours and eight signs: the same pair comes back after 56.
std::unique_ptr<QwtSymbol> trendSign(int curve, const QColor& colour, double side)
{
    const auto style = signs.at(static_cast<std::size_t>(curve) % signs.size());
    return std::make_unique<QwtSymbol>(style, QBrush(colour), QPen(colour, 1.5),
                                       QSizeF(side, side).toSize());
}

QPixmap trendSample(int curve, const QPalette& palette, const QSize& size)
{
    constexpr int scale = 2; // for screens of small pixels
    QPixmap pixmap(size * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = trendColour(curve, palette);
    const double middle = size.height() / 2.0;
    painter.setPen(QPen(colour, 2));
    painter.drawLine(QPointF(0, middle), QPointF(size.width(), middle));
    trendSign(curve, colour, middle)->drawSymbol(&painter, QPointF(size.width() / 2.0, middle));
    return pixmap;
}

} // namespace dov417
