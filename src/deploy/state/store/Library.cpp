#include "deploy/state/store/Library.h"

#include <dlfcn.h>
#include <fcntl.h>

#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/OpenLimit.h"

namespace ZET::Deploy {

Library::Library(const char* file, const char* package)
    : m_file(file), m_package(package), m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle != nullptr) return;
    // Why it failed is told in words alone; where no other file can be opened either, it may be installed.
    const Descriptor other(open("/", O_PATH | O_CLOEXEC));
    if (other < 0 && IsOfOpenLimit(errno)) FailOfCall(file, _("cannot be loaded"));
    Fail(_("cannot be loaded"));
}

void* Library::Symbol(const char* name) const {
    void* const symbol = dlsym(m_handle, name);
    if (symbol == nullptr) Fail(_("cannot be used"));
    return symbol;
}

void Library::Fail(const std::string& what) const {
    const char* const error = dlerror();
    throw Failure({.file = m_file,
                   .text = what + ": " + (error != nullptr ? error : _("unknown reason")),
                   .remedy = Words("install the package %s, or set ZET_HISTORY=no", m_package)});
}

}  // namespace ZET::Deploy
