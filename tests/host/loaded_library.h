// The built library, loaded once for a test, and failures as text.
#ifndef DOV417_TESTS_LOADED_LIBRARY_H
#define DOV417_TESTS_LOADED_LIBRARY_H

#include <QtGlobal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "complaint.h"
#include "driver/library.h"

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

} // namespace dov417

#endif
