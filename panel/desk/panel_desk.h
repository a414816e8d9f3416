// The window's side of everything: what is watched, what is known of it, what was written, and how
// the line is. Pages read it, listen to it and ask it; it alone knows the line's thread.
#ifndef DOV417_PANEL_PANEL_DESK_H
#define DOV417_PANEL_PANEL_DESK_H

#include <QDateTime>
#include <QObject>
#include <QTimer>
#include <string>
#include <vector>

#include "line/areas.h"
#include "panel/desk/line_thread.h"
#include "panel/desk/panel_tags.h"
#include "panel/desk/station_words.h"
#include "panel/desk/value_book.h"

namespace dov417 {

// A write of this session, as the list shows it.
struct PanelWrite {
    long long number = 0;
    QDateTime asked;
    std::string name;
    std::string address;
    std::string text; // with its unit
    bool hasEnded = false;
    Result result;
};

class PanelDesk : public QObject {
    Q_OBJECT

public:
    // Nothing heard of the line's thread for so long: it hangs in a port.
    static constexpr std::chrono::milliseconds patience = LineWorker::orderPatience;
    static constexpr std::size_t maxWrites = 10000; // in the list, the oldest go first

    // The library is to outlive it.
    explicit PanelDesk(const Library& library);
    // For what was recorded: what is asked of the line goes nowhere, and what came is handed in.
    enum class Source {
        line,
        recording
    };
    PanelDesk(const Library& library, Source source);

    const Library& library() const
    {
        return library_;
    }
    const PanelTags& tags() const
    {
        return tags_;
    }
    const ValueBook& book() const
    {
        return book_;
    }
    const LineState& state() const
    {
        return state_;
    }
    // While the line's thread hangs: the one that it was, whichever is asked for meanwhile.
    const LineState& shownState() const
    {
        return book_.isSilent() ? hanging_ : state_;
    }
    const std::vector<PanelWrite>& writes() const
    {
        return writes_;
    }
    // What the numbers on the line are called.
    const std::vector<Area>& areas() const
    {
        return areas_;
    }
    // Null until the first has come; about a second old.
    const std::shared_ptr<const LinkStatistics>& statistics() const
    {
        return statistics_;
    }
    const StationNames& stationNames() const
    {
        return stationNames_;
    }
    std::size_t writesUnderWay() const; // values, those of a recipe included
    bool hasLine() const;               // open, or about to be
    // What the line was opened with last, or will be planned for.
    const LineSetup& lineSetup() const
    {
        return setup_;
    }
    // For plans, while no line is open.
    void setLineSetup(const LineSetup& setup);
    // Counts the lines that were opened: what was meant for one goes to no other.
    int lineNumber() const
    {
        return line_.line();
    }
    bool recipeIsUnderWay() const
    {
        return recipe_ != 0;
    }
    // What the own controller was started with, if the line has one.
    const simulator::SimulationOptions& ownController() const
    {
        return ownController_;
    }
    // Of the own controller, about a second old; null without one, and until the first has come.
    const std::shared_ptr<const ControllerReport>& controllerReport() const
    {
        return controller_;
    }

    void open(const LineSetup& setup, const simulator::SimulationOptions& controller = {});
    void close();
    // Another project's items: the line is closed, and what was known, written and counted on it
    // says nothing of them, same address or not.
    void beginProject(const std::vector<Item>& items);
    // Replaces what is watched.
    void setItems(const std::vector<Item>& items);
    void addItems(const std::vector<Item>& items);
    void removeItems(const std::vector<std::size_t>& places);
    void setStationNames(const StationNames& names);
    // While the line's thread hangs it is not unlocked: that would happen whenever it goes on.
    void setUnlocked(bool isUnlocked);
    // Of the own controller, until another line is opened.
    void setConditions(const simulator::Conditions& conditions);
    // One value from what a person typed. Throws a UsageFailure: nothing is written then.
    void write(const PanelValue& value, const std::string& text);
    // Asks for the driver's plan with this merge gap. Throws a UsageFailure while something is
    // written, which would have no outcome then.
    void setGap(int gap);
    // Throws a UsageFailure, with nothing done, unless this line is open, unlocked for a download,
    // and moves no other recipe. recipeTold() tells of this number how it goes.
    long long moveRecipe(int line, RecipeKind kind, const std::vector<RecipeEntry>& entries);
    // Ends it, and with it whatever else is being written; recipeTold() tells how it ended.
    void cancelRecipe();
    // See LineThread::end().
    bool end();

    // What the line's thread tells.
    void apply(const LineBatch& batch);
    // The same of a recording, which is of what is watched now.
    void play(LineBatch batch);

signals:
    // What is watched or how it is written is different: places and rows begin anew.
    void tagsChanged();
    void stationNamesChanged();
    // Values or qualities of these addresses; standing and value are in the book.
    void valuesChanged(const std::vector<dov417::Address>& addresses);
    // As they came, in their order: what is watched now, changed or not, as it was known then. The
    // book has the last of each already.
    void valuesCame(const std::vector<dov417::View>& views, dov417::Clock::time_point then);
    // What was read before that may have been other requests' replies; comes before the values that
    // are known then.
    void repliesDoubted(dov417::Clock::time_point then);
    // In their order; notTold: so many before these were dropped.
    void framesPassed(const std::vector<dov417::Passed>& passed, long long notTold);
    // Another project: what was known and kept before is of another machine. It has no line yet,
    // and before its tags come lineBegan().
    void projectBegan();
    // Another line: what passed on the one before is history.
    void lineBegan();
    void stateChanged();
    void writesChanged();
    // `hasEnded` marks the last news of a recipe.
    void recipeTold(const dov417::RecipeNews& news);
    void lineSetupChanged();

private:
    void watch(const std::vector<Address>& addresses);
    void forgetLine();
    std::vector<Address> valueAddresses() const;
    void requireHearing() const;
    void requireWriting() const;
    void tellAllValues();
    void listen();
    void endWrite(const WriteOutcome& outcome);
    void hearOfRecipe(const RecipeNews& news);

    const Library& library_;
    std::vector<Area> areas_;
    PanelTags tags_;
    std::vector<Address> watched_; // of its items
    StationNames stationNames_;
    ValueBook book_;
    LineSetup setup_;
    LineState state_;
    LineState hanging_;            // as it was when nothing more was heard
    long long recipe_ = 0;         // under way
    std::size_t recipeValues_ = 0; // of a download
    std::vector<PanelWrite> writes_;
    std::shared_ptr<const LinkStatistics> statistics_;
    simulator::SimulationOptions ownController_;
    std::shared_ptr<const ControllerReport> controller_;
    Clock::time_point lastHeard_{};
    QTimer listenTimer_;
    LineThread line_;
};

} // namespace dov417

#endif
