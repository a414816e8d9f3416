// A page of the panel: a widget that shows what the desk knows, and asks it for what a person
// wants.
//
// It is given the desk and nothing else. There it reads what is watched (tags()), what is known of
// each value by its address (book()), the line's state, its counters, the writes; it listens to
// tagsChanged, valuesChanged(addresses), framesPassed(passed, notTold), lineBegan, stateChanged and
// writesChanged, and to projectBegan, with which whatever it keeps of values and of the line goes.
// It asks for open(), setItems(), write() and the like, and shows a sentence with `told`. What time
// it is it asks panel_clock.h.
//
// It never calls the driver or the session: these live in the line's thread (line_worker.h), which
// tells the desk in batches of copies, one at a time and at most 25 a second; where the window is
// slow they are merged, and what was dropped is counted in `notTold`.
//
// What it keeps of a value it keeps by the value's address: rows and places begin anew with
// tagsChanged. A value is shown with its standing (book().standing(), in words by state_words.h).
#ifndef DOV417_PANEL_PANEL_PAGE_H
#define DOV417_PANEL_PANEL_PAGE_H

#include <QIcon>
#include <QUndoStack>
#include <QWidget>
#include <functional>
#include <string>

#include "panel/desk/panel_desk.h"
#include "text/placed_json.h"

namespace dov417 {

class PanelPage : public QWidget {
    Q_OBJECT

public:
    // The desk is to outlive it.
    explicit PanelPage(PanelDesk& desk);

    // In the list of pages, where it stands with Alt and its letter.
    virtual QString title() const = 0;
    virtual QIcon icon() const = 0;
    // What it shows is not what it will show in a moment, made elsewhere: no time for a picture.
    virtual bool isBusy() const;

    // Its member in a project, which holds how it is arranged and never what it shows; empty: it
    // has none.
    virtual std::string settingsName() const;
    virtual OrderedJson settings() const;
    // Reads what a project holds for it, {} where that is nothing, and returns what arranges the
    // page so; that cannot fail. Throws a UsageFailure that begins with the member, "plots[1].axis:
    // ...": nothing is different then.
    virtual std::function<void()> prepared(const OrderedJson& settings);
    // Whether a change of them is a step that a person takes back.
    virtual bool settingsAreSteps() const;
    // Of edits that are no project's: these are taken back while the page is shown. Null: it has
    // none, and the project's are.
    virtual QUndoStack* ownHistory();
    // Before another project, or none, is in its place: asks where something would be lost that is
    // in no file. False: it stays as it is.
    virtual bool mayForget();
    // What of that would be lost if the program ended now: {} where that is nothing. A copy keeps
    // it, and the next program's page takes it up, after the project that it is of: as one step,
    // and not saved. Returns what a person is to be told of that.
    virtual bool hasUnsaved() const;
    virtual OrderedJson unsaved() const;
    virtual QString takeUpUnsaved(const OrderedJson& unsaved);

signals:
    // What a person should read now, below whatever page; an empty text takes it back.
    void told(const QString& text);
    // A person has arranged it otherwise.
    void settingsChanged();
    // What unsaved() tells is another.
    void unsavedChanged();

protected:
    PanelDesk& desk_;
};

} // namespace dov417

#endif
