#include "tool/key_decoder.h"

#include <array>
#include <utility>

namespace dov417 {

namespace {

const char escapeByte = '\033';
const std::string endOfPaste = "\033[201~";
constexpr std::size_t maxPaste = 4096; // longer ones are no input for anybody here
constexpr std::size_t maxSequence = 32;

struct Sequence {
    const char* text;
    KeyKind kind;
};

// Between Esc [ and the end, without modifiers.
constexpr std::array<Sequence, 15> sequences = {{{"A", KeyKind::up},
                                                 {"B", KeyKind::down},
                                                 {"H", KeyKind::home},
                                                 {"F", KeyKind::end},
                                                 {"1~", KeyKind::home},
                                                 {"4~", KeyKind::end},
                                                 {"5~", KeyKind::pageUp},
                                                 {"6~", KeyKind::pageDown},
                                                 {"7~", KeyKind::home},
                                                 {"8~", KeyKind::end},
                                                 {"M", KeyKind::enter}, // of the number pad
                                                 {"1A", KeyKind::up},   // with Shift or the like
                                                 {"1B", KeyKind::down},
                                                 {"1H", KeyKind::home},
                                                 {"1F", KeyKind::end}}};

KeyKind kindOf(const std::string& sequence)
{
    for (const Sequence& each : sequences)
        if (sequence == each.text)
            return each.kind;
    return KeyKind::other;
}

// Bytes that follow the first one of a character in UTF-8.
std::size_t bytesToCome(unsigned char first)
{
    return first >= 0xF0 && first < 0xF8 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
}

} // namespace

bool operator==(const Key& a, const Key& b)
{
    return a.kind == b.kind && a.text == b.text;
}

std::vector<Key> KeyDecoder::take(const std::string& bytes)
{
    for (const char byte : bytes)
        take(byte);
    return std::exchange(keys_, {});
}

bool KeyDecoder::awaitsMore() const
{
    return state_ == State::escape;
}

std::vector<Key> KeyDecoder::giveUpWaiting()
{
    if (state_ == State::escape) {
        state_ = State::escapeTold;
        tell(KeyKind::escape);
    }
    return std::exchange(keys_, {});
}

void KeyDecoder::take(char byte)
{
    switch (state_) {
    case State::plain:
        takePlain(byte);
        break;
    case State::character:
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) {
            takePlain(byte); // what had begun was no character
            break;
        }
        begun_ += byte;
        if (--missing_ == 0) {
            state_ = State::plain;
            tell(KeyKind::text, begun_);
        }
        break;
    case State::escape:
    case State::escapeTold:
        takeAfterEscape(byte);
        break;
    case State::sequence:
        takeOfSequence(byte);
        break;
    case State::shifted:
        endSequence(byte);
        break;
    case State::function:
        state_ = State::plain;
        tell(KeyKind::other);
        break;
    case State::paste:
        takeOfPaste(byte);
        break;
    }
}

void KeyDecoder::takePlain(char byte)
{
    state_ = State::plain;
    const auto code = static_cast<unsigned char>(byte);
    if (byte == escapeByte)
        state_ = State::escape;
    else if (byte == '\r' || byte == '\n')
        tell(KeyKind::enter);
    else if (code == 0x7F || byte == '\b')
        tell(KeyKind::backspace);
    else if (code == 0x15)
        tell(KeyKind::clear);
    else if (code < 0x20)
        tell(KeyKind::other);
    else if (code < 0x80)
        tell(KeyKind::text, std::string(1, byte));
    else if ((missing_ = bytesToCome(code)) > 0) {
        state_ = State::character;
        begun_ = std::string(1, byte);
    }
}

void KeyDecoder::takeAfterEscape(char byte)
{
    begun_.clear();
    if (byte == '[') {
        state_ = State::sequence;
    } else if (byte == 'O') {
        state_ = State::shifted;
    } else {
        if (state_ == State::escape)
            tell(KeyKind::escape);
        takePlain(byte);
    }
}

void KeyDecoder::takeOfSequence(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    if (byte == escapeByte) {
        state_ = State::escape;
    } else if (begun_.empty() && byte == '[') {
        state_ = State::function; // F1 to F5 of the Linux console
    } else if (code >= 0x40 && code < 0x7F) {
        endSequence(byte);
    } else {
        begun_ += byte;
        if (begun_.size() > maxSequence)
            state_ = State::plain;
    }
}

void KeyDecoder::takeOfPaste(char byte)
{
    begun_ += byte;
    const std::size_t size = endOfPaste.size();
    if (begun_.size() >= size && begun_.compare(begun_.size() - size, size, endOfPaste) == 0) {
        state_ = State::plain;
        begun_.resize(begun_.size() - size);
        tell(KeyKind::pasted, begun_.size() > maxPaste ? std::string() : begun_);
    } else if (begun_.size() > 2 * maxPaste) {
        begun_.erase(maxPaste, begun_.size() - maxPaste - size); // too long it stays
    }
}

// Modifiers follow a semicolon.
void KeyDecoder::endSequence(char last)
{
    state_ = State::plain;
    const std::string sequence = begun_.substr(0, begun_.find(';')) + last;
    if (sequence == "200~") {
        state_ = State::paste;
        begun_.clear();
    } else {
        tell(kindOf(sequence));
    }
}

void KeyDecoder::tell(KeyKind kind, const std::string& text)
{
    keys_.push_back({kind, text});
}

} // namespace dov417
