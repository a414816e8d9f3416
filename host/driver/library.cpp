#include "driver/library.h"

#include <QtGlobal>
#include <dlfcn.h>
#include <filesystem>
#include <link.h>
#include <stdexcept>
#include <vector>

#include "driver/needed_libraries.h"
#include "line/failure.h"

namespace dov417 {

namespace {

namespace fs = std::filesystem;

// The name that an installation without development files has comes first.
const char* const fileNames[] = {"libdov417modbus.so." DOV417_SOVERSION, "libdov417modbus.so"};

// bin/../lib, whatever the two are called in this installation.
std::vector<fs::path> foldersOfTheExecutable()
{
    std::error_code ignored;
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    if (folder.empty())
        return {};
    std::vector<fs::path> folders = {folder, folder.parent_path(),
                                     folder.parent_path() / DOV417_INSTALL_LIBDIR};
    if (folders.back() != folder.parent_path() / "lib")
        folders.push_back(folder.parent_path() / "lib");
    return folders;
}

std::string reason()
{
    const char* text = dlerror();
    return text ? text : "unknown reason";
}

// Texts and lists go to the library and back: with another Qt's they would be read as what they are
// not. To be asked before the library's code runs.
void refuseAnotherQt(const std::string& file)
{
    const int generation = qtGeneration(neededLibraries(file));
    if (generation != 0 && generation != QT_VERSION_MAJOR)
        throw Failure("cannot load the driver library: " + file + " is made for Qt " +
                      std::to_string(generation) + ", this program for Qt " +
                      std::to_string(QT_VERSION_MAJOR) +
                      "; both have to be built with the same Qt.");
}

void* open(const std::string& file)
{
    refuseAnotherQt(file);
    return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

std::string fileOf(void* handle, const std::string& asked)
{
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map && map->l_name && *map->l_name)
        return map->l_name;
    return asked;
}

} // namespace

Library::Library(const std::string& path)
{
    if (!path.empty()) {
        // Without a slash the loader would search its own path instead of opening this file.
        const std::string file = fs::absolute(path).lexically_normal().string();
        handle_ = open(file);
        if (!handle_)
            throw Failure("cannot load the driver library: " + reason());
    } else {
        std::string tried;
        for (const fs::path& folder : foldersOfTheExecutable()) {
            for (const char* name : fileNames) {
                const fs::path file = folder / name;
                std::error_code ignored;
                if (!handle_ && fs::exists(file, ignored)) {
                    handle_ = open(file.string());
                    if (!handle_)
                        throw Failure("cannot load the driver library: " + reason());
                }
            }
            tried += "\n  " + folder.string();
        }
        for (const char* name : fileNames)
            if (!handle_)
                handle_ = open(name);
        if (!handle_)
            throw Failure("cannot find the driver library " + std::string(fileNames[0]) +
                          "; looked into" + tried + "\n  and the linker's own folders (" +
                          reason() + ").\nName the file with --library PATH.");
    }
    path_ = fileOf(handle_, path);
    try {
        refuseAnotherQt(path_); // where the linker found it, we see the file only now
    } catch (const Failure&) {
        dlclose(handle_);
        throw;
    }

    const auto resolve = [this](const char* name) {
        void* symbol = dlsym(handle_, name);
        if (!symbol) {
            const std::string file = path_;
            dlclose(handle_);
            throw Failure(file + " is no driver library: it does not export " + name);
        }
        return symbol;
    };
#define DOV417_RESOLVE(name) this->name = reinterpret_cast<decltype(this->name)>(resolve(#name));
    DOV417_EXPORTED_FUNCTIONS(DOV417_RESOLVE)
#undef DOV417_RESOLVE
    driver = static_cast<Protocol*>(resolve("driver"));
}

Library::~Library()
{
    dlclose(handle_);
}

DriverClaim::DriverClaim(const Library& library) : library_(library)
{
    if (library_.isClaimed_)
        throw std::logic_error("the driver is in use: it cannot be configured for anything else");
    library_.isClaimed_ = true;
}

DriverClaim::~DriverClaim()
{
    library_.isClaimed_ = false;
}

} // namespace dov417
