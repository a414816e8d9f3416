#include "line/conversation.h"

#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

Conversation::Conversation(const std::vector<Area>& areas) : areas_(areas) {}

std::string Conversation::request(const QByteArray& frame)
{
    request_ = frame;
    return requestText(frame, areas_);
}

std::string Conversation::reply(const QByteArray& frame) const
{
    return replyText(frame, request_, areas_);
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

} // namespace dov417
