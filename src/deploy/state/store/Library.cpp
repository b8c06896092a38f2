#include "deploy/state/store/Library.h"

#include <dlfcn.h>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

Library::Library(const char* file, const char* package)
    : m_file(file), m_package(package), m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) Fail("cannot be loaded");
}

void* Library::Symbol(const char* name) const {
    void* const symbol = dlsym(m_handle, name);
    if (symbol == nullptr) Fail("cannot be used");
    return symbol;
}

void Library::Fail(const std::string& what) const {
    const char* const error = dlerror();
    throw Failure(std::string(m_file) + ": " + what + ": " + (error != nullptr ? error : "unknown reason") +
                  " (install the package " + m_package + ", or set ZET_HISTORY=no)");
}

}  // namespace ZET::Deploy
