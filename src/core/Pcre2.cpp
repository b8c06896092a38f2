#include "Pcre2.h"

#include <dlfcn.h>

#include "Message.h"

namespace ZET::Core {

namespace {

constexpr char kFile[] = "libpcre2-8.so.0";

void* Required(void* found) {
    if (found == nullptr) Fail("Failed to load library '%s': %s.", kFile, ::dlerror());
    return found;
}

}  // namespace

void* Pcre2::Open() {
    return Required(::dlopen(kFile, RTLD_LAZY | RTLD_LOCAL));
}

void* Pcre2::Symbol(const char* name) const {
    return Required(::dlsym(m_library, name));
}

}  // namespace ZET::Core
