#include "deploy/state/Writes.h"

#include <unordered_set>

namespace ZET::Deploy {

namespace {

std::unordered_set<std::string>& WrittenFiles() {
    static thread_local std::unordered_set<std::string> written;
    return written;
}

}  // namespace

void IsAboutToWrite(const std::string& path) {
    WrittenFiles().insert(path);
}

bool MayHaveWritten(const std::string& path) {
    return WrittenFiles().contains(path);
}

void ForgetWrites() {
    WrittenFiles().clear();
}

}  // namespace ZET::Deploy
