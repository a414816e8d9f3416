// The line's time to scale, as a logic analyser shows it: a lane for the line, on which spans add
// up to the whole time, and one for each station.
//
// It follows the line, the last cycles fitted into it, until somebody looks closer: then it stands
// still. Seen without colours too: each kind of span has a pattern of its own.
#ifndef DOV417_PANEL_WIRE_VIEW_H
#define DOV417_PANEL_WIRE_VIEW_H

#include <QWidget>
#include <array>
#include <optional>
#include <vector>

#include "line/areas.h"
#include "panel/desk/station_words.h"
#include "panel/frames/wire_times.h"

namespace dov417 {

enum class WireRuler {
    a,
    b
};
constexpr int wireRulers = 2;

class WireView : public QWidget {
    Q_OBJECT

public:
    static constexpr int maxCycles = 100;
    static constexpr Micros minLength{20}; // shown at once

    // Both are to outlive it.
    WireView(const WireTimes& times, const std::vector<Area>& areas);

    // Others, from their beginning; they are to outlive it, too. A recording is never followed.
    void showTimes(const WireTimes& times, bool isRecording);
    // What has passed is shown, where it follows.
    void refresh(Clock::time_point now);
    void setFollowing(bool isFollowing);
    bool isFollowing() const
    {
        return isFollowing_;
    }
    // So many are fitted into it while it follows.
    void setCycles(int cycles);
    int cycles() const
    {
        return cycles_;
    }

    // Each but the first makes it stand still.
    void fitCycles();
    void fitAll();
    void zoom(double factor);  // greater than 1: closer
    void pan(double windows);  // to the right
    void chooseNext(int step); // from frame to frame

    // At an edge of the current frame, another one each time; where it is not seen, A at a third
    // of what is and B at two thirds.
    void setRuler(WireRuler ruler);
    void setRuler(WireRuler ruler, std::optional<Clock::time_point> at);
    void removeRulers();
    const std::optional<Clock::time_point>& ruler(WireRuler ruler) const
    {
        return rulers_.at(static_cast<std::size_t>(ruler));
    }

    Clock::time_point from() const
    {
        return from_;
    }
    Clock::time_point to() const
    {
        return to_;
    }
    long long current() const // the number of the frame; 0: none
    {
        return current_;
    }
    void forget(); // another line
    void setStationNames(const StationNames& names);

    // Where a moment is, and the lane of a station; the first lane is the line's.
    double xOf(Clock::time_point time) const;
    Clock::time_point timeAt(double x) const;
    QRect lane(int lane) const;
    int laneOf(int station) const;
    // What stands in place of a picture; empty: there is one.
    QString emptyText() const;

signals:
    void windowMoved(); // or it follows now, or not any more
    void currentChanged();
    void rulersChanged();
    void frameChosen(long long number); // to be looked at in full

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    QSize sizeHint() const override;

private:
    void show(Clock::time_point from, Clock::time_point to);
    void standStill();
    void zoomAt(double factor, Clock::time_point centre);
    void setCurrent(long long number);
    void bringIntoView(const WireFrame& frame);
    const WireFrame* frameAt(const QPoint& place) const;
    std::optional<WireRuler> rulerAt(int x) const;
    Clock::time_point snapped(int x) const;
    std::vector<Clock::time_point> edgesOf(const WireFrame& frame) const;
    void setMinimumLanes();
    void measureTexts();

    static constexpr int spaceAround = 4;
    // Of what there is to be seen.
    Clock::time_point latest() const;
    QString laneName(int station) const;
    int laneHeight() const;
    int left() const // of the time
    {
        return left_;
    }
    int right() const
    {
        return right_;
    }
    int top() const; // of the lanes
    int nameRows() const;
    void paintScale(QPainter& painter) const;
    void paintCycles(QPainter& painter) const;
    void paintLanes(QPainter& painter) const;
    void paintSpan(QPainter& painter, const WireSpan& span, std::vector<double>& painted) const;
    void paintNames(QPainter& painter) const;
    void paintCurrent(QPainter& painter) const;
    void paintRulers(QPainter& painter) const;

    const WireTimes* times_;
    bool isRecording_ = false;
    const std::vector<Area>& areas_;
    StationNames names_;
    Clock::time_point from_{};
    Clock::time_point to_{};
    Clock::time_point zero_{}; // of the scale
    Clock::time_point now_{};
    int left_ = 0;
    int right_ = 0;
    bool isFollowing_ = true;
    int cycles_ = 2;
    std::size_t lanes_ = 0; // of stations
    long long current_ = 0;
    std::array<std::optional<Clock::time_point>, wireRulers> rulers_;
    std::optional<WireRuler> dragged_;
    bool isPressed_ = false;
    bool isPanned_ = false;
    QPoint pressed_;
    Clock::time_point pressedFrom_{};
};

} // namespace dov417

#endif
