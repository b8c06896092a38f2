#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include "Message.h"
#include "ModuleCode.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"

namespace ZET::Core {

namespace {

/// The reason is in `errno`.
[[noreturn]] void RefuseFile(const std::string& path) {
    const int error = errno;
    RefuseModule(path, Message("%m"), "", error);
}

/// Resolves to an absolute path without links, so that the library search path plays no part and the checked
/// directory is the one that contains the file.
std::string ResolvePath(const std::string& path) {
    RequireNotEmpty(path, "LoadModule");
    if (path.find('\0') != std::string::npos)
        RefuseModule(path, Message("the file name holds a NUL byte"), "");
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    if (resolved == nullptr) RefuseFile(path);
    return resolved.get();
}

bool IsWritableByOthers(const struct stat& status) {
    return status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

/// A module runs with the rights of its host: if that is root, only root may be able to change it.
void CheckFile(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status;
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0) RefuseFile(path);
    if (!S_ISREG(status.st_mode)) RefuseModule(path, Message("it is not a regular file"), "");
    if (::geteuid() != 0) return;
    if (IsWritableByOthers(status))
        RefuseModule(path, Message("others than root may write the file, and root runs it"), "");
    const std::string directory = DirectoryOf(path);
    if (::stat(directory.c_str(), &status) != 0) RefuseFile(path);
    if (IsWritableByOthers(status))
        RefuseModule(path, Message("others than root may write its directory, and root runs it"), "");
}

void* Open(const std::string& path) {
    CheckFile(path);
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) RefuseModule(path, ::dlerror(), "");
    return handle;
}

}  // namespace

ModuleCode::ModuleCode(const std::string& path)
    : m_path(ResolvePath(path)),
      m_handle(Open(m_path)),
      m_entries{.getInfo = reinterpret_cast<decltype(m_entries.getInfo)>(EntryPoint("get_module_info")),
                .init = reinterpret_cast<decltype(m_entries.init)>(EntryPoint("module_init")),
                .done = reinterpret_cast<decltype(m_entries.done)>(EntryPoint("module_done"))} {}

void ModuleCode::Closer::operator()(void* handle) const {
    ::dlclose(handle);
}

void* ModuleCode::EntryPoint(const char* name) const {
    void* address = ::dlsym(m_handle.get(), name);
    if (address == nullptr) Refuse(Message("it has no entry point '%s'", name));
    return address;
}

}  // namespace ZET::Core
