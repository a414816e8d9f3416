// The keys that a terminal's bytes mean, however the bytes come apart.
#ifndef DOV417_TOOL_KEY_DECODER_H
#define DOV417_TOOL_KEY_DECODER_H

#include <string>
#include <vector>

namespace dov417 {

enum class KeyKind {
    text, // one character
    up,
    down,
    pageUp,
    pageDown,
    home,
    end,
    enter,
    escape,
    backspace,
    clear,  // Ctrl-U
    pasted, // all of it
    other
};

struct Key {
    KeyKind kind = KeyKind::other;
    std::string text = {}; // of text and pasted, in UTF-8
};
bool operator==(const Key& a, const Key& b);

// For a terminal that was asked to mark what is pasted (bracketed paste).
class KeyDecoder {
public:
    std::vector<Key> take(const std::string& bytes);

    // The last byte was Esc: the key, or the beginning of another one's bytes.
    bool awaitsMore() const;
    // No more came in time: it was the key. What looks like the rest of another key's bytes is not
    // taken for text even then: a slow line may have delivered that key in pieces.
    std::vector<Key> giveUpWaiting();

private:
    enum class State {
        plain,
        character, // within one of several bytes
        escape,
        escapeTold,
        sequence, // after Esc [
        shifted,  // after Esc O
        function, // after Esc [ [
        paste
    };
    void take(char byte);
    void takePlain(char byte);
    void takeAfterEscape(char byte);
    void takeOfSequence(char byte);
    void takeOfPaste(char byte);
    void endSequence(char last);
    void tell(KeyKind kind, const std::string& text = std::string());

    State state_ = State::plain;
    std::string begun_;       // of a character, a sequence or a paste
    std::size_t missing_ = 0; // bytes of a character
    std::vector<Key> keys_;
};

} // namespace dov417

#endif
