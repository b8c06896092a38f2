#include "deploy/state/Writes.h"

namespace ZET::Deploy {

namespace {

/// Not the object itself: the C library ends the program if a thread's own object has to be destroyed later
/// and there is no memory to remember that.
thread_local Writes* newest = nullptr;

}  // namespace

Writes::Writes() : m_outer(newest) {
    newest = this;
}

Writes::~Writes() {
    Writes** place = &newest;
    while (*place != nullptr && *place != this)
        place = &(*place)->m_outer;
    if (*place == this) *place = m_outer;
}

void IsAboutToWrite(const std::string& path) {
    for (Writes* writes = newest; writes != nullptr; writes = writes->m_outer)
        writes->m_paths.insert(path);
}

}  // namespace ZET::Deploy
