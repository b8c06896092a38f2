#include "deploy/state/Writes.h"

#include <unordered_set>

namespace ZET::Deploy {

namespace {

std::unordered_set<std::string>& WrittenByThisThread() {
    static thread_local std::unordered_set<std::string> written;
    return written;
}

}  // namespace

void IsAboutToWrite(const std::string& path) {
    WrittenByThisThread().insert(path);
}

bool MayHaveWritten(const std::string& path) {
    return WrittenByThisThread().contains(path);
}

void ForgetWrites() {
    WrittenByThisThread().clear();
}

}  // namespace ZET::Deploy
