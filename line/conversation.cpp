#include "line/conversation.h"

#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

Conversation::Conversation(const std::vector<Area>& areas) : areas_(areas) {}

std::string Conversation::request(const QByteArray& frame)
{
    request_ = asked_ = frame;
    return requestText(frame, areas_);
}

std::string Conversation::reply(const QByteArray& frame)
{
    std::string text = replyText(frame, asked_, areas_);
    asked_.clear();
    return text;
}

std::string Conversation::stray(const QByteArray& frame) const
{
    if (frame == request_) // an adapter's echo
        return requestText(frame, areas_);
    const bool looksLikeReply = request_.size() > 1 && frame.size() > 1 &&
                                frame.at(1) == request_.at(1) &&
                                frame.size() == lengthOfReplyTo(request_);
    return replyText(frame, looksLikeReply ? QByteArray() : request_, areas_);
}

void Conversation::note(const LogEntry& entry)
{
    if (tellsGap(entry) || tellsPort(entry))
        forget();
    else if (tellsNoAnswer(entry))
        asked_.clear();
}

void Conversation::forget()
{
    request_.clear();
    asked_.clear();
}

const QByteArray& Conversation::asked() const
{
    return asked_;
}

} // namespace dov417
