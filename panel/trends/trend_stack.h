// All plots of the trends page below each other, on one time, with their cursors and notes.
//
// It draws no more than 25 times a second, only while it is seen, and in turns of a few
// milliseconds each, however much there is to draw.
#ifndef DOV417_PANEL_TREND_STACK_H
#define DOV417_PANEL_TREND_STACK_H

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <array>
#include <functional>

#include "panel/trends/trend_plot.h"
#include "panel/trends/trend_view.h"

namespace dov417 {

class TrendStack : public QScrollArea {
    Q_OBJECT

public:
    static constexpr int screenPauseMs = 40;
    static constexpr std::size_t eventsPerTurn = 250000;
    static constexpr int turnMs = 3; // no further plot is begun after so long

    using Cursors = std::array<std::optional<TrendTime>, TrendPlot::cursors>;

    // Both are to outlive it.
    TrendStack(const TrendHistory& history, const TrendClock& clock);

    void setPlots(const std::vector<TrendGroup>& groups);
    const std::vector<TrendPlot*>& plots() const
    {
        return plots_;
    }
    std::size_t current() const // the plot that was touched last
    {
        return current_;
    }
    void setCurrent(std::size_t plot);

    const TrendView& view() const
    {
        return view_;
    }
    // Changes what is seen, and draws it.
    template <typename Change>
    void arrange(Change change)
    {
        change(view_);
        isChanged_ = true;
        draw();
        emit viewChanged();
    }
    // Everything that there is of these values.
    void showAll();
    void followValues();
    // Of the plot that was touched last.
    void changeHeight(const std::function<void(TrendPlot&)>& change);

    const Cursors& cursors() const
    {
        return cursors_;
    }
    void setCursor(int cursor, std::optional<TrendTime> at);
    const std::vector<TrendNote>& notes() const
    {
        return notes_;
    }
    // Nothing but what there is now: no plot, no cursor, no note.
    void clear();
    // One that was made by itself.
    void addNote(const TrendNote& note);
    // A person's, all of them.
    void setOwnNotes(const std::vector<TrendNote>& notes);
    // It was moved, and all has another place on the axis.
    void followClock();
    void setPalettes();
    // There is more to draw than before.
    void tell()
    {
        isNews_ = true;
    }
    // Draws what has not been drawn. False where it takes further turns, which come by themselves.
    bool draw();
    void pressKey(QKeyEvent* event);

signals:
    void viewChanged(); // by a person
    void cursorsChanged();
    void noteAsked();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void follow(TrendPlot* plot);
    void align();
    void point(TrendTime at, int cursor);
    void moveCursor(int columns);
    void showCursors();
    void showNotes();

    const TrendHistory& history_;
    const TrendClock& clock_;
    QSplitter* const splitter_;
    std::vector<TrendGroup> groups_;
    std::vector<TrendPlot*> plots_;
    std::size_t current_ = 0;
    TrendView view_;
    TrendWindow window_;
    Cursors cursors_;
    int cursor_ = 0; // that the keys move
    std::vector<TrendNote> notes_;
    bool isChanged_ = true;
    bool isNews_ = false;
    std::size_t drawn_ = 0; // plots, of this picture
    bool isDrawing_ = false;
    QElapsedTimer sinceDrawn_;
    QTimer timer_;
    QTimer turnTimer_;
};

} // namespace dov417

#endif
