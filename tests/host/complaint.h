// Failures as text.
#ifndef DOV417_TESTS_COMPLAINT_H
#define DOV417_TESTS_COMPLAINT_H

#include <string>

#include "line/failure.h"

namespace dov417 {

// What a call complains of; "" where it does not.
template <typename Call>
std::string complaint(Call call)
{
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return std::string();
}

} // namespace dov417

#endif
