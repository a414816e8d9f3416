// The built library, loaded once for a test, and failures as text.
#ifndef DOV417_TESTS_LOADED_LIBRARY_H
#define DOV417_TESTS_LOADED_LIBRARY_H

#include <QtGlobal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "driver/library.h"
#include "line/failure.h"

namespace dov417 {

// The driver tells its planning on the debug stream.
inline void withoutDebugLines(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtDebugMsg)
        ADD_FAILURE() << message.toStdString();
}

class LoadedLibrary : public ::testing::Test {
protected:
    LoadedLibrary()
    {
        qInstallMessageHandler(withoutDebugLines);
    }
    ~LoadedLibrary() override
    {
        qInstallMessageHandler(nullptr);
    }
    Library library{DOV417_LIBRARY};
};

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
