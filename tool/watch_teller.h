// Where `watch` tells changes: the table, lines of text or JSON, and a CSV file.
#ifndef DOV417_TOOL_WATCH_TELLER_H
#define DOV417_TOOL_WATCH_TELLER_H

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "session/session.h"
#include "tool/troubles.h"
#include "tool/view_table.h"
#include "tool/wide_rows.h"

namespace dov417 {

struct CsvWish {
    std::string name;    // - is the standard output, which then has nothing else; empty: none
    bool isWide = false; // a column a value and a row an interval, instead of a row a change
};

// "07:31:02"
std::string clockText();

class WatchTeller {
public:
    // outputLost: a file or the terminal takes nothing any more. Throws a Failure if the CSV file
    // cannot be written.
    // hasScreen: what happens is shown there, and told once it is gone.
    WatchTeller(bool json, const CsvWish& csv, bool hasScreen, const std::vector<ViewLabel>& labels,
                const std::function<void()>& outputLost);

    // A value, or its quality alone: one that is old is not to be taken for a good one.
    void tell(const ViewChange& change);
    // A row of all views, if the CSV is wide.
    void tellRow(const std::vector<View>& views);
    void tellAbandoned(const std::string& request, const std::string& reason, Reason why);
    void tellPort(bool open, const std::string& message);
    void tellNotice(const std::string& text);
    // What was said once and came again, and what the screen has shown.
    void tellUnsaid();
    // For the screen, the latest ones.
    std::vector<std::string> messages() const;
    // Has been shown on the screen: told with its time once that is gone.
    void keep(const std::string& text);

    void requireComplete() const;

private:
    void tellInJson(const ViewChange& change, const ViewLabel& label, const std::string& value,
                    const std::string& previous);
    void say(const std::string& text);
    void show(const std::string& about, const std::string& text);

    struct CloseFile {
        void operator()(std::FILE* file) const
        {
            std::fclose(file);
        }
    };

    bool json_;
    std::vector<ViewLabel> labels_;
    std::string csvName_;
    bool csvIsOutput_;
    std::function<void()> outputLost_;
    bool hasScreen_;
    std::unique_ptr<std::FILE, CloseFile> csvFile_;
    std::FILE* csv_ = nullptr;
    std::optional<WideRows> wideRows_;
    // On the screen: the latest messages, each with what it is about.
    struct Message {
        std::string about;
        std::string text;
    };
    std::vector<Message> messages_;
    std::vector<std::string> notices_; // that the screen has shown
    bool wasLost_ = false;
    Troubles troubles_;
};

} // namespace dov417

#endif
