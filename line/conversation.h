// What is said on a line, in words: a reply tells neither its addresses nor what else was expected,
// so it is explained by the request before it.
#ifndef DOV417_LINE_CONVERSATION_H
#define DOV417_LINE_CONVERSATION_H

#include <QByteArray>
#include <string>
#include <vector>

#include "line/areas.h"

namespace dov417 {

class Conversation {
public:
    // Without areas only the numbers on the line are given.
    explicit Conversation(const std::vector<Area>& areas = {});

    // Explains a request. What comes in from now on is compared with it.
    std::string request(const QByteArray& frame);

    // Explains what came in after the latest request: its reply, or what was taken for none. There
    // may be several, and there need not have been a request.
    std::string reply(const QByteArray& frame) const;
    // The same of what is known not to be the reply: it is told without the request's addresses,
    // whatever its length is, and the request itself is told as what it is.
    std::string stray(const QByteArray& frame) const;

private:
    std::vector<Area> areas_;
    QByteArray request_;
};

} // namespace dov417

#endif
