#include "Pcre2.h"

#include <dlfcn.h>

#include <string>

#include "Message.h"

namespace ZET::Core {

namespace {

constexpr char kFile[] = "libpcre2-8.so.0";

/// Nobody's pattern is to blame.
void* Required(void* found) {
    if (found != nullptr) return found;
    const std::string reason = ::dlerror();
    FailKnowing({.path = kFile, .text = reason, .remedy = Message("install the package libpcre2-8-0")},
                "Failed to load library '%s': %s (install the package libpcre2-8-0)", kFile, reason.c_str());
}

}  // namespace

void* Pcre2::Open() {
    return Required(::dlopen(kFile, RTLD_LAZY | RTLD_LOCAL));
}

void* Pcre2::Symbol(const char* name) const {
    return Required(::dlsym(m_library, name));
}

}  // namespace ZET::Core
