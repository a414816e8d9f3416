#include "tool/key_decoder.h"

#include <gtest/gtest.h>

namespace dov417 {

std::ostream& operator<<(std::ostream& out, const Key& key)
{
    return out << static_cast<int>(key.kind) << " '" << key.text << "'";
}

namespace {

using Keys = std::vector<Key>;

Keys decoded(const std::string& bytes)
{
    KeyDecoder decoder;
    return decoder.take(bytes);
}

Key text(const char* character)
{
    return {KeyKind::text, character};
}

TEST(Keys, OfATerminalAreKnownInEachOfTheirForms)
{
    for (const char* up : {"\033[A", "\033OA", "\033[1;5A"})
        EXPECT_EQ(decoded(up), (Keys{{KeyKind::up}})) << up + 1;
    for (const char* down : {"\033[B", "\033OB"})
        EXPECT_EQ(decoded(down), (Keys{{KeyKind::down}})) << down + 1;
    for (const char* home : {"\033[H", "\033OH", "\033[1~", "\033[7~"})
        EXPECT_EQ(decoded(home), (Keys{{KeyKind::home}})) << home + 1;
    for (const char* end : {"\033[F", "\033OF", "\033[4~", "\033[8~"})
        EXPECT_EQ(decoded(end), (Keys{{KeyKind::end}})) << end + 1;
    EXPECT_EQ(decoded("\033[5~\033[6~"), (Keys{{KeyKind::pageUp}, {KeyKind::pageDown}}));
    EXPECT_EQ(decoded("\r\n\033OM"), (Keys{{KeyKind::enter}, {KeyKind::enter}, {KeyKind::enter}}));
    EXPECT_EQ(decoded("\177\b\025"),
              (Keys{{KeyKind::backspace}, {KeyKind::backspace}, {KeyKind::clear}}));
}

TEST(Keys, ThatNobodyKnowsAreNoText)
{
    for (const char* unknown : {"\033[C", "\033[3~", "\033[[A", "\033[15;2~", "\001", "\033Oq"})
        EXPECT_EQ(decoded(unknown), (Keys{{KeyKind::other}})) << unknown + 1;
}

TEST(Text, ComesCharacterByCharacter)
{
    EXPECT_EQ(decoded("w5 \xC3\xA4\xE2\x82\xAC"),
              (Keys{text("w"), text("5"), text(" "), text("\xC3\xA4"), text("\xE2\x82\xAC")}));
}

TEST(Text, ThatIsNoUtf8IsLeftOut)
{
    EXPECT_EQ(decoded("a\xA4"
                      "b\xC3"
                      "c\xFF"
                      "d"),
              (Keys{text("a"), text("b"), text("c"), text("d")}));
}

TEST(Bytes, MayComeApartAnywhere)
{
    const std::string bytes = "w\033[A\xC3\xA4\033[200~x\033[201\r\033[201~\033OB\033[6;2~q\r";
    const Keys whole = decoded(bytes);
    ASSERT_EQ(whole.size(), 8U);
    for (std::size_t first = 0; first <= bytes.size(); ++first)
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            KeyDecoder decoder;
            Keys keys = decoder.take(bytes.substr(0, first));
            for (const std::string& rest :
                 {bytes.substr(first, second - first), bytes.substr(second)})
                for (const Key& key : decoder.take(rest))
                    keys.push_back(key);
            EXPECT_EQ(keys, whole) << first << " " << second;
        }
}

TEST(Esc, IsAKeyOnceNothingFollows)
{
    KeyDecoder decoder;
    EXPECT_FALSE(decoder.awaitsMore());
    EXPECT_EQ(decoder.take("\033"), Keys());
    EXPECT_TRUE(decoder.awaitsMore());
    EXPECT_EQ(decoder.giveUpWaiting(), (Keys{{KeyKind::escape}}));
    EXPECT_FALSE(decoder.awaitsMore());
    EXPECT_EQ(decoder.giveUpWaiting(), Keys());
    EXPECT_EQ(decoder.take("q"), (Keys{text("q")}));
}

TEST(Esc, IsAKeyWhereNoSequenceFollows)
{
    EXPECT_EQ(decoded("\033q"), (Keys{{KeyKind::escape}, text("q")}));
    EXPECT_EQ(decoded("\033\033[A"), (Keys{{KeyKind::escape}, {KeyKind::up}}));
}

TEST(Esc, FollowedLateByTheRestOfASequenceIsNoText)
{
    KeyDecoder decoder;
    decoder.take("\033");
    decoder.giveUpWaiting();
    EXPECT_EQ(decoder.take("[200~w5\r\033[201~"), (Keys{{KeyKind::pasted, "w5\r"}}))
        << "or what is pasted over a slow line would be typed";
    decoder.take("\033");
    decoder.giveUpWaiting();
    EXPECT_EQ(decoder.take("[A"), (Keys{{KeyKind::up}}));
}

TEST(WhatIsPasted, IsOnePiece)
{
    EXPECT_EQ(decoded("\033[200~w5\r\033[A\033[201~w"),
              (Keys{{KeyKind::pasted, "w5\r\033[A"}, text("w")}));
}

TEST(WhatIsPasted, AndIsFarTooLongIsNothing)
{
    for (const std::size_t size : {4096U, 4097U, 8192U, 8193U, 100000U}) {
        const Keys keys = decoded("\033[200~" + std::string(size, 'w') + "\033[201~q");
        const std::string kept = size > 4096 ? "" : std::string(size, 'w');
        EXPECT_EQ(keys, (Keys{{KeyKind::pasted, kept}, text("q")})) << size;
    }
}

} // namespace

} // namespace dov417
