// What listeners are to be told: collected while the session works, told from the event loop, or
// within a call that tells, as Session::close() does.
//
// A listener may do anything, change what is watched or close the line; that must not happen in the
// middle of a reply that is being dealt with.
#ifndef DOV417_SESSION_TELLINGS_H
#define DOV417_SESSION_TELLINGS_H

#include <QObject>
#include <deque>
#include <functional>
#include <string>

namespace dov417 {

class Tellings : public QObject {
public:
    using Telling = std::function<void()>;

    // threw: called with what a listener has thrown, which goes no further.
    explicit Tellings(std::function<void(const std::string& what)> threw);

    // To be told later, in the order of these calls.
    void add(Telling telling);
    // An outcome for whoever wants it: `done` may be empty.
    template <typename Done, typename... Outcome>
    void addDone(Done done, Outcome... outcome)
    {
        if (done)
            add([done, outcome...]() { done(outcome...); });
    }
    // Tells all that is there. Called by a listener it does nothing: the rest follows once that
    // listener has returned, or runs an event loop of its own, as for a question to the user.
    void tell();

private:
    void tellWaiting();

    std::function<void(const std::string&)> threw_;
    std::deque<Telling> waiting_;
    bool isPosted_ = false;
    int telling_ = 0; // listeners that have not returned
};

} // namespace dov417

#endif
