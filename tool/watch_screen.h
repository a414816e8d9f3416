// What `watch` shows on a terminal, and what its keys do there: without a terminal, from keys and
// values to lines.
//
// A line is known by its place among the views, which stays: neither a filter nor scrolling leads a
// write elsewhere.
#ifndef DOV417_TOOL_WATCH_SCREEN_H
#define DOV417_TOOL_WATCH_SCREEN_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tool/key_decoder.h"
#include "tool/screen_lines.h"
#include "tool/view_table.h"

namespace dov417 {

struct ScreenLine {
    std::string text;
    bool isReversed = false;
};

// What there is to show at this moment.
struct WatchContent {
    const std::vector<View>& views;
    Clock::time_point now{};
    std::string clock; // "07:31:02"
    std::string counters;
    std::vector<std::string> allCounters;
    std::vector<std::string> messages;
};

// What the keys ask for.
struct WatchWishes {
    std::function<void()> end;
    // What this value may be. Throws a UsageFailure where it cannot be written.
    std::function<std::string(std::size_t view)> range;
    // Throws a UsageFailure where nothing is sent.
    std::function<void(std::size_t view, const std::string& value)> write;
};

class WatchScreen {
public:
    WatchScreen(const std::vector<ViewLabel>& labels, bool takesKeys, WatchWishes wishes);

    // Keys that came at once. afterPause: nothing came just before them.
    void take(const std::vector<Key>& keys, const std::vector<View>& views,
              const std::string& clock, bool afterPause);
    // A value, or how good it is, has changed.
    void changed(const View& view, std::size_t index);
    // Of the write; stays until the next one.
    void showOutcome(const std::string& text);

    // As many lines as there are rows, none longer than there are columns.
    std::vector<ScreenLine> paint(const ScreenSize& size, const WatchContent& content);

private:
    enum class Page {
        values,
        counters,
        keys
    };
    enum class Field {
        none,
        filter,
        value
    };
    // The values as they were when they were made to stand still.
    struct Still {
        std::vector<View> views;
        std::string clock;
    };

    void take(const Key& key, const std::vector<View>& views, const std::string& clock);
    void takeCommand(const std::string& text, const std::vector<View>& views,
                     const std::string& clock);
    void takeInField(const Key& key);
    void openField(Field field, const std::string& entry);
    void askForValue();
    void confirmField();
    void leaveField();
    void goBack();
    void turnTo(Page page);
    void filter();
    void move(const Key& key);
    std::size_t cursorPlace() const;

    void doubtStill(const View& view, std::size_t index);
    std::string title(const WatchContent& content) const;
    std::vector<ScreenLine> middle(const ScreenSize& size, std::size_t room,
                                   const WatchContent& content);
    std::vector<ScreenLine> values(const ScreenSize& size, std::size_t room,
                                   const WatchContent& content);
    std::vector<std::string> pageLines(const WatchContent& content) const;
    std::vector<ScreenLine> foot(const ScreenSize& size, const WatchContent& content) const;
    std::vector<std::string> fieldLines(std::size_t columns, const WatchContent& content) const;

    std::vector<ViewLabel> labels_;
    bool takesKeys_;
    WatchWishes wishes_;

    Page page_ = Page::values;
    std::size_t pageTop_ = 0;
    std::vector<std::size_t> shown_;    // views that the filter lets through
    std::optional<std::size_t> cursor_; // a view
    std::size_t top_ = 0;               // among those that are shown
    std::size_t room_ = 0;              // lines of values, or of another page, on the screen
    std::string filter_;
    std::optional<Still> still_;

    Field field_ = Field::none;
    std::string entry_;
    std::size_t target_ = 0; // the view that is to be written
    std::string range_;
    bool isAlone_ = false; // the key that is taken: no other came with it, or just before
    std::string message_;  // until the next key
    std::string outcome_;
};

} // namespace dov417

#endif
