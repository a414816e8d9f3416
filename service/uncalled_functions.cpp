#include "uncalled_functions.h"

#include "protocol/wrap.h"

namespace {

int hexNibble(const QByteArray& text, int position)
{
    if (position < 0 || position >= text.size()) {
        return 0;
    }
    const int code = static_cast<unsigned char>(text.at(position));
    if (code < '0' || code == '@') {
        return 0;
    }
    return code < '@' ? code - '0' : (code - 'A' + 10) & 0x0F;
}

} // namespace

unsigned char asc2hex(QByteArray text, int position)
{
    return static_cast<unsigned char>(hexNibble(text, position) << 4 |
                                      hexNibble(text, wrapAdd(position, 1)));
}
