// What is said on a line, in words: a reply tells neither its addresses nor what else was expected,
// so it is explained by the request before it.
#ifndef DOV417_LINE_CONVERSATION_H
#define DOV417_LINE_CONVERSATION_H

#include <QByteArray>
#include <string>
#include <vector>

#include "line/areas.h"
#include "line/line_log.h"

namespace dov417 {

class Conversation {
public:
    // Without areas only the numbers on the line are given.
    explicit Conversation(const std::vector<Area>& areas = {});

    // Explains a request. What comes in from now on is compared with it.
    std::string request(const QByteArray& frame);

    // Explains what was taken for the latest request's reply. A request has one: what comes behind
    // it is told without addresses, as it is where there has been no request.
    std::string reply(const QByteArray& frame);
    // Explains what is known not to be the reply: it is told without the request's addresses,
    // whatever its length is, and the request itself is told as what it is.
    std::string stray(const QByteArray& frame) const;
    // Something else that a log tells. Some of it, "no answer" for one, ends the wait for a reply.
    void note(const LogEntry& entry);
    // What passed here is not known: nothing before it explains what comes behind it.
    void forget();

    // The request whose reply may come; empty: there is none.
    const QByteArray& asked() const;

private:
    std::vector<Area> areas_;
    QByteArray request_; // the latest
    QByteArray asked_;
};

} // namespace dov417

#endif
