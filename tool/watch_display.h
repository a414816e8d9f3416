// `watch` on a terminal: the values, and keys that scroll, filter and write.
#ifndef DOV417_TOOL_WATCH_DISPLAY_H
#define DOV417_TOOL_WATCH_DISPLAY_H

#include <QTimer>
#include <string>
#include <vector>

#include "session/write_words.h"
#include "tool/live_command.h"
#include "tool/terminal.h"
#include "tool/watch_screen.h"
#include "tool/watch_teller.h"

namespace dov417 {

extern const char* const watchHasEnded;

class WatchDisplay {
public:
    // The teller knows what else is to be shown, and is told what was written.
    WatchDisplay(const Library& library, LiveCommand& live, const std::vector<Item>& items,
                 const std::vector<ViewLabel>& labels, WatchTeller& teller);

    void changed(const ViewChange& change);
    void draw();

    // There is nothing more to show. What has no outcome; empty if nothing was being written.
    std::string end();

private:
    void came(const std::string& bytes);
    void take(const std::vector<Key>& keys, bool afterPause);
    std::string range(std::size_t view) const;
    void write(std::size_t view, const std::string& value);
    void written();
    Item itemOf(std::size_t view) const;

    const Library& library_;
    LiveCommand& live_;
    Session& session_;
    std::vector<Item> items_;
    std::vector<ViewLabel> labels_;
    WatchTeller& teller_;
    WriteJob job_;
    bool isWriting_ = false;
    bool hasEnded_ = false;
    WatchScreen screen_;
    KeyDecoder decoder_;
    QTimer redrawTimer_;
    QTimer escapeTimer_;
    QTimer pauseTimer_;
    bool hasPaused_ = true; // no key came for a moment, and none waits
    Terminal terminal_;
};

} // namespace dov417

#endif
