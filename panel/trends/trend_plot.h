// One plot of the trends page: curves of at most two units, on a time that all plots share. It
// tells what a person does with mouse and wheel; what becomes of it is the page's.
#ifndef DOV417_PANEL_TREND_PLOT_H
#define DOV417_PANEL_TREND_PLOT_H

#include <QMouseEvent>
#include <QRubberBand>
#include <qwt_plot.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_legenditem.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_textlabel.h>

#include "panel/trends/trend_curve.h"

namespace dov417 {

// A moment with something to say.
struct TrendNote {
    TrendTime at = 0;
    QString text;
    bool isOwn = true; // a person's; else it was noted by itself
};
// With its sign.
QString noteText(const TrendNote& note);

class TrendPlot : public QwtPlot {
    Q_OBJECT

public:
    static constexpr int cursors = 2;

    static constexpr int minLines = 5; // of text, high

    explicit TrendPlot(const TrendClock& clock);

    // Qwt lays all scales out to tell these, time and again.
    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

    // firstNumber: of its first curve, in its page.
    void setGroup(const TrendGroup& group, int firstNumber);
    const std::vector<TrendCurve*>& curves() const
    {
        return curves_;
    }
    void setPalettes();
    // The time below it; and how wide its scales are to be beside those of other plots.
    void setTimeShown(bool isShown);
    int leftExtent() const;
    int rightExtent() const;
    void setExtents(int left, int right);

    // False where the budget was too small: to be called again. What is drawn is whole meanwhile.
    bool update(const TrendHistory& history, const TrendWindow& window, std::size_t& budget);
    void setCursor(int cursor, std::optional<TrendTime> at);
    void setNotes(const std::vector<TrendNote>& notes);
    // Scales that follow the values again.
    void followValues();
    // Stands there as long as there is nothing to draw.
    void setAbsence(const QString& why);
    // The scales of numbers: closer (< 1) or farther around their middle; and up by a part of them.
    void zoomHeight(double factor);
    void moveHeight(double part);
    // For a picture that has no list beside it.
    void setLegendShown(bool isShown);
    double pixels() const; // the canvas is wide

    static const QStringList& cursorNames();

signals:
    void windowChosen(dov417::TrendTime from, dov417::TrendTime to);
    void moved(double part);                              // of the window, to later times
    void zoomed(double factor, dov417::TrendTime around); // < 1: into it
    void pointed(dov417::TrendTime at, bool isOther);     // a click
    void keyPressed(QKeyEvent* event);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool mousePressed(const QMouseEvent& event);
    bool mouseMoved(const QMouseEvent& event);
    bool mouseReleased(const QMouseEvent& event);
    void chooseArea(const QRect& area);
    void showScales();
    void showTimes();
    bool isOfNumbers(QwtPlot::Axis axis) const;
    void setHeight(QwtPlot::Axis axis, double middle, double height);
    void showBits(QwtPlot::Axis axis, const std::vector<std::string>& names, bool isAlone);
    TrendTime timeAt(int x) const;

    const TrendClock& clock_;
    TrendGroup group_;
    int firstNumber_ = 0;             // of its first curve
    std::vector<TrendCurve*> curves_; // the plot's own
    QwtPlotGrid* const grid_;
    // In the plot while it is shown alone, as it makes all of itself anew with each curve.
    QwtPlotLegendItem legend_;
    QwtPlotTextLabel* const absence_;
    std::vector<QwtPlotMarker*> cursorMarks_;
    std::vector<QwtPlotMarker*> noteMarks_;
    QRubberBand* const band_;
    QPoint pressed_;
    int panFrom_ = 0;
    bool isBanding_ = false;
    bool isPanning_ = false;
};

} // namespace dov417

#endif
