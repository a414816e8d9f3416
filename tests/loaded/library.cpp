#include "library.h"

#include <QtGlobal>
#include <dlfcn.h>
#include <fstream>

Library::Library() : handle_(dlopen(path(), RTLD_NOW | RTLD_LOCAL))
{
    if (handle_ == nullptr) {
        ADD_FAILURE() << dlerror();
    }
}

Library::~Library()
{
    if (handle_ != nullptr) {
        EXPECT_EQ(dlclose(handle_), 0);
    }
}

const char* Library::path()
{
    return LIBRARY_PATH;
}

bool Library::isLoaded()
{
    void* const handle = dlopen(path(), RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

int Library::mappings()
{
    std::ifstream maps("/proc/self/maps");
    EXPECT_TRUE(maps.is_open());
    int found = 0;
    for (std::string line; std::getline(maps, line);) {
        found += line.find("/libdov417modbus") != std::string::npos ? 1 : 0;
    }
    return found;
}

void* Library::symbol(const char* name) const
{
    void* const found = handle_ != nullptr ? dlsym(handle_, name) : nullptr;
    if (found == nullptr) {
        ADD_FAILURE() << "no symbol " << name;
    }
    return found;
}

Protocol& Library::driver() const
{
    return *static_cast<Protocol*>(symbol("driver"));
}

namespace {

#if QT_VERSION >= 0x050000
void dropMessage(QtMsgType, const QMessageLogContext&, const QString&) {}
const QtMessageHandler systemHandler = nullptr;
void install(QtMessageHandler handler)
{
    qInstallMessageHandler(handler);
}
#else
void dropMessage(QtMsgType, const char*) {}
const QtMsgHandler systemHandler = nullptr;
void install(QtMsgHandler handler)
{
    qInstallMsgHandler(handler);
}
#endif

} // namespace

Quiet::Quiet()
{
    install(dropMessage);
}

Quiet::~Quiet()
{
    install(systemHandler);
}

std::string latin1(const QString& text)
{
    return text.toLatin1().constData();
}

QByteArray fromHex(const char* hex)
{
    return QByteArray::fromHex(hex);
}

std::string toHex(const unsigned char* bytes, int length)
{
    return QByteArray(reinterpret_cast<const char*>(bytes), length).toHex().constData();
}
