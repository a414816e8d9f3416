#include "panel/desk/panel_icons.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <array>

namespace dov417 {

namespace {

constexpr int iconSide = 24; // what the pictures are drawn in

void drawStart(QPainter& painter)
{
    const std::array<QPointF, 3> arrow = {QPointF(7, 4), QPointF(20, 12), QPointF(7, 20)};
    painter.drawPolygon(arrow.data(), static_cast<int>(arrow.size()));
}

void drawValues(QPainter& painter)
{
    painter.drawRect(QRectF(3, 4, 18, 16));
    painter.drawLine(QPointF(3, 9.5), QPointF(21, 9.5));
    painter.drawLine(QPointF(3, 14.5), QPointF(21, 14.5));
    painter.drawLine(QPointF(11, 4), QPointF(11, 20));
}

void drawLamps(QPainter& painter)
{
    for (const QPointF& centre : {QPointF(7, 7), QPointF(17, 7), QPointF(7, 17), QPointF(17, 17)})
        painter.drawEllipse(centre, 3.5, 3.5);
    painter.setBrush(painter.pen().color());
    painter.drawEllipse(QPointF(17, 7), 3.5, 3.5);
    painter.drawEllipse(QPointF(7, 17), 3.5, 3.5);
}

void drawTrends(QPainter& painter)
{
    painter.drawLine(QPointF(3, 3), QPointF(3, 21));
    painter.drawLine(QPointF(3, 21), QPointF(22, 21));
    const std::array<QPointF, 6> curve = {QPointF(5, 17), QPointF(9, 12), QPointF(12, 14),
                                          QPointF(15, 6), QPointF(18, 9), QPointF(22, 4)};
    painter.drawPolyline(curve.data(), static_cast<int>(curve.size()));
}

// Bits as an oscilloscope shows them.
void drawLine(QPainter& painter)
{
    const std::array<QPointF, 10> edge = {
        QPointF(2, 17),  QPointF(6, 17), QPointF(6, 7),  QPointF(10, 7),  QPointF(10, 17),
        QPointF(15, 17), QPointF(15, 7), QPointF(19, 7), QPointF(19, 17), QPointF(22, 17)};
    painter.drawPolyline(edge.data(), static_cast<int>(edge.size()));
}

// Words, some of them asked for.
void drawPlan(QPainter& painter)
{
    for (const int y : {4, 10, 16})
        for (const int x : {3, 8, 13, 18}) {
            painter.setBrush((x + y) % 3 == 0 ? QBrush(painter.pen().color()) : QBrush());
            painter.drawRect(QRectF(x, y, 3.5, 4));
        }
}

// A list that goes up and down.
void drawRecipes(QPainter& painter)
{
    for (const double y : {6.0, 12.0, 18.0})
        painter.drawLine(QPointF(3, y), QPointF(11, y));
    painter.drawLine(QPointF(15, 4), QPointF(15, 20));
    painter.drawLine(QPointF(15, 4), QPointF(13, 7));
    painter.drawLine(QPointF(20, 4), QPointF(20, 20));
    painter.drawLine(QPointF(20, 20), QPointF(22, 17));
}

// A sign that warns.
void drawFaults(QPainter& painter)
{
    const std::array<QPointF, 3> triangle = {QPointF(12, 3.5), QPointF(21.5, 20), QPointF(2.5, 20)};
    painter.drawPolygon(triangle.data(), static_cast<int>(triangle.size()));
    painter.drawLine(QPointF(12, 10), QPointF(12, 14.5));
    painter.drawPoint(QPointF(12, 17.3));
}

// Lanes of a logic analyser.
void drawWire(QPainter& painter)
{
    painter.drawLine(QPointF(3, 20.5), QPointF(21, 20.5));
    for (const QRectF& span : {QRectF(3, 4, 4, 5), QRectF(9, 4, 7, 5), QRectF(12, 12, 3, 5)})
        painter.drawRect(span);
    painter.fillRect(QRectF(17, 12, 4, 5), painter.pen().color());
}

// A pulse.
void drawHealth(QPainter& painter)
{
    const std::array<QPointF, 7> pulse = {QPointF(2, 13),  QPointF(7, 13),  QPointF(10, 5),
                                          QPointF(14, 20), QPointF(17, 10), QPointF(18, 13),
                                          QPointF(22, 13)};
    painter.drawPolyline(pulse.data(), static_cast<int>(pulse.size()));
}

} // namespace

QIcon iconOf(PanelIcon icon)
{
    constexpr int pixels = 2 * iconSide; // for screens of small pixels
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(2, 2);
    painter.setPen(QPen(QApplication::palette().color(QPalette::WindowText), 1.6));
    switch (icon) {
    case PanelIcon::start:
        drawStart(painter);
        break;
    case PanelIcon::values:
        drawValues(painter);
        break;
    case PanelIcon::lamps:
        drawLamps(painter);
        break;
    case PanelIcon::trends:
        drawTrends(painter);
        break;
    case PanelIcon::line:
        drawLine(painter);
        break;
    case PanelIcon::plan:
        drawPlan(painter);
        break;
    case PanelIcon::recipes:
        drawRecipes(painter);
        break;
    case PanelIcon::faults:
        drawFaults(painter);
        break;
    case PanelIcon::wire:
        drawWire(painter);
        break;
    case PanelIcon::health:
        drawHealth(painter);
        break;
    }
    painter.end();
    return QIcon(pixmap);
}

} // namespace dov417
