#include "SystemCalls.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <dlfcn.h>
#include <fcntl.h>
#include <pcre2.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <regex>
#include <string_view>
#include <utility>

namespace ZET::Test {

namespace {

SystemCalls* watcher = nullptr;

/// Nobody is told where nobody watches, which is no place to run out of memory.
std::string LastComponent(std::string_view path) {
    if (watcher == nullptr) return "";
    static const std::regex copy("\\.[A-Za-z0-9]{6}\\.tmp$");
    return std::regex_replace(std::string(path.substr(path.rfind('/') + 1)), copy, ".XXXXXX.tmp");
}

std::string PathOf(int descriptor) {
    if (watcher == nullptr) return "";
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
    return length < 0 ? "?" : LastComponent(std::string(path, static_cast<std::size_t>(length)));
}

bool IsToFail(const char* name, const std::string& path) {
    return watcher != nullptr && watcher->Take(name, path);
}

template <typename Function>
Function* Original(Function* /*type*/, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

SystemCalls::SystemCalls() {
    watcher = this;
}

SystemCalls::~SystemCalls() {
    watcher = nullptr;
}

void SystemCalls::Fail(const std::string& name, int error, int turn, bool once) {
    m_failures[name] = {error, turn, once};
}

void SystemCalls::Before(const std::string& name, std::function<void()> action) {
    m_actions[name] = std::move(action);
}

void SystemCalls::BeforeEach(std::function<void()> action) {
    m_eachAction = std::move(action);
}

void SystemCalls::Shorten(const std::string& name, std::size_t size) {
    m_limits[name] = size;
}

std::vector<std::string> SystemCalls::Calls(const std::set<std::string>& names) const {
    std::vector<std::string> result;
    for (const std::string& call : m_calls)
        if (names.count(call.substr(0, call.find(' '))) > 0) result.push_back(call);
    return result;
}

int SystemCalls::Count(const std::string& name) const {
    const auto found = m_counts.find(name);
    return found != m_counts.end() ? found->second : 0;
}

bool SystemCalls::Take(const std::string& name, const std::string& path) {
    const std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_counts[name]++;
    m_calls.push_back(name + " " + path);
    if (const auto each = m_eachAction) {
        // It may make calls of its own.
        m_eachAction = nullptr;
        each();
        m_eachAction = each;
    }
    if (const auto action = m_actions.extract(name)) action.mapped()();
    const auto found = m_failures.find(name);
    if (found == m_failures.end() || --found->second.turn > 0) return false;
    errno = found->second.error;
    if (found->second.once) m_failures.erase(found);
    return true;
}

std::size_t SystemCalls::Limit(const std::string& name, std::size_t size) const {
    const auto found = m_limits.find(name);
    return found != m_limits.end() ? std::min(found->second, size) : size;
}

}  // namespace ZET::Test

using ZET::Test::IsToFail;
using ZET::Test::LastComponent;
using ZET::Test::Original;
using ZET::Test::PathOf;
using ZET::Test::watcher;

extern "C" {

int fsync(int descriptor) {
    if (IsToFail("fsync", PathOf(descriptor))) return -1;
    return Original(&fsync, "fsync")(descriptor);
}

void sync() noexcept {
    if (watcher != nullptr) watcher->Take("sync", "");
}

int rename(const char* from, const char* to) noexcept {
    if (IsToFail("rename", LastComponent(from) + " " + LastComponent(to))) return -1;
    return Original(&rename, "rename")(from, to);
}

int renameat(int fromDirectory, const char* from, int toDirectory, const char* to) noexcept {
    if (IsToFail("rename", LastComponent(from) + " " + LastComponent(to))) return -1;
    return Original(&renameat, "renameat")(fromDirectory, from, toDirectory, to);
}

int unlink(const char* path) noexcept {
    if (IsToFail("unlink", LastComponent(path))) return -1;
    return Original(&unlink, "unlink")(path);
}

int ftruncate(int descriptor, off_t size) noexcept {
    if (IsToFail("ftruncate", PathOf(descriptor))) return -1;
    return Original(&ftruncate, "ftruncate")(descriptor, size);
}

int fchmod(int descriptor, mode_t mode) noexcept {
    char text[16];
    std::snprintf(text, sizeof text, " %04o", mode);
    if (IsToFail("fchmod", PathOf(descriptor) + text)) return -1;
    return Original(&fchmod, "fchmod")(descriptor, mode);
}

int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
    if (IsToFail("fchown", PathOf(descriptor))) return -1;
    return Original(&fchown, "fchown")(descriptor, owner, group);
}

int fsetxattr(int descriptor, const char* name, const void* value, size_t size, int flags) noexcept {
    if (IsToFail("fsetxattr", PathOf(descriptor) + " " + name)) return -1;
    return Original(&fsetxattr, "fsetxattr")(descriptor, name, value, size, flags);
}

int fremovexattr(int descriptor, const char* name) noexcept {
    if (IsToFail("fremovexattr", PathOf(descriptor) + " " + name)) return -1;
    return Original(&fremovexattr, "fremovexattr")(descriptor, name);
}

ssize_t listxattr(const char* path, char* list, size_t size) noexcept {
    if (IsToFail("listxattr", LastComponent(path))) return -1;
    return Original(&listxattr, "listxattr")(path, list, size);
}

ssize_t getxattr(const char* path, const char* name, void* value, size_t size) noexcept {
    if (IsToFail("getxattr", LastComponent(path) + " " + name)) return -1;
    return Original(&getxattr, "getxattr")(path, name, value, size);
}

ssize_t flistxattr(int descriptor, char* list, size_t size) noexcept {
    if (IsToFail("listxattr", PathOf(descriptor))) return -1;
    return Original(&flistxattr, "flistxattr")(descriptor, list, size);
}

ssize_t fgetxattr(int descriptor, const char* name, void* value, size_t size) noexcept {
    if (IsToFail("getxattr", PathOf(descriptor) + " " + name)) return -1;
    return Original(&fgetxattr, "fgetxattr")(descriptor, name, value, size);
}

ssize_t copy_file_range(int from, off_t* fromOffset, int to, off_t* toOffset, size_t size, unsigned flags) {
    if (IsToFail("copy_file_range", PathOf(to))) return -1;
    if (watcher != nullptr) size = watcher->Limit("copy_file_range", size);
    return Original(&copy_file_range, "copy_file_range")(from, fromOffset, to, toOffset, size, flags);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    if (IsToFail("read", PathOf(descriptor))) return -1;
    if (watcher != nullptr) size = watcher->Limit("read", size);
    return Original(&read, "read")(descriptor, buffer, size);
}

ssize_t write(int descriptor, const void* buffer, size_t size) {
    if (IsToFail("write", PathOf(descriptor))) return -1;
    if (watcher != nullptr) size = watcher->Limit("write", size);
    return Original(&write, "write")(descriptor, buffer, size);
}

/// What the core looks up in PCRE2, which is linked here, is found in this program first.
void* dlopen(const char* file, int flags) noexcept {
    const bool isPcre2 = file != nullptr && std::string_view(file).starts_with("libpcre2");
    return Original(&dlopen, "dlopen")(isPcre2 ? nullptr : file, flags);
}

pcre2_compile_context* pcre2_compile_context_create(pcre2_general_context* general) {
    if (IsToFail("pcre2_compile_context_create", "")) return nullptr;
    return Original(&pcre2_compile_context_create, "pcre2_compile_context_create_8")(general);
}

pcre2_match_context* pcre2_match_context_create(pcre2_general_context* general) {
    if (IsToFail("pcre2_match_context_create", "")) return nullptr;
    return Original(&pcre2_match_context_create, "pcre2_match_context_create_8")(general);
}

pcre2_match_data* pcre2_match_data_create(uint32_t size, pcre2_general_context* general) {
    if (IsToFail("pcre2_match_data_create", "")) return nullptr;
    return Original(&pcre2_match_data_create, "pcre2_match_data_create_8")(size, general);
}

pcre2_jit_stack* pcre2_jit_stack_create(size_t start, size_t most, pcre2_general_context* general) {
    if (IsToFail("pcre2_jit_stack_create", "")) return nullptr;
    return Original(&pcre2_jit_stack_create, "pcre2_jit_stack_create_8")(start, most, general);
}

int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (IsToFail("open", LastComponent(path))) return -1;
    return Original(&open, "open")(path, flags, mode);
}

int mkostemps(char* path, int suffixSize, int flags) {
    if (IsToFail("open", LastComponent(path))) return -1;
    return Original(&mkostemps, "mkostemps")(path, suffixSize, flags);
}

int close(int descriptor) {
    const std::string path = watcher != nullptr ? PathOf(descriptor) : "";
    const int result = Original(&close, "close")(descriptor);
    return IsToFail("close", path) ? -1 : result;
}

int lstat(const char* path, struct stat* status) noexcept {
    if (IsToFail("lstat", LastComponent(path))) return -1;
    return Original(&lstat, "lstat")(path, status);
}

int stat(const char* path, struct stat* status) noexcept {
    if (IsToFail("stat", LastComponent(path))) return -1;
    return Original(&stat, "stat")(path, status);
}

int fstat(int descriptor, struct stat* status) noexcept {
    if (IsToFail("fstat", PathOf(descriptor))) return -1;
    return Original(&fstat, "fstat")(descriptor, status);
}
}
