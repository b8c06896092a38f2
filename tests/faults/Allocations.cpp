#include <cerrno>
#include <cstddef>

#include "FaultPlan.h"

// What the C library's own functions of these names do; `operator new` allocates with them too.
extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT
void* __libc_realloc(void* memory, std::size_t size);            // NOLINT
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT
}

namespace ZET::Faults {

namespace {

bool IsRefused() {
    if (theLog == nullptr) return false;
    const std::uint64_t turn = ++theLog->allocations;
    const bool isRefused = (thePlan.kind == Kind::Memory && turn == thePlan.turn) ||
                           (thePlan.kind == Kind::Starve && turn >= thePlan.turn);
    if (!isRefused) return false;
    theLog->isMet = 1;
    errno = ENOMEM;
    return true;
}

}  // namespace

}  // namespace ZET::Faults

using ZET::Faults::IsRefused;

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_realloc(memory, size);
}

__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void** memory, std::size_t alignment,
                                                          std::size_t size) noexcept {
    if (IsRefused()) return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}
}
