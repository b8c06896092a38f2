#include "SystemCalls.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace ZET {

namespace {
bool theScriptRuns = false;
SystemCallScript theScript;
SystemCallRecord theRecord;

int Failed(int error) {
    errno = error;
    return -1;
}

/// Counts the call, and tells whether it is to fail; `errno` is set then.
bool Fails(const char* call) {
    if (!theScriptRuns) return false;
    ++theRecord.counts[call];
    const auto planned = theScript.failing.find(call);
    if (planned == theScript.failing.end()) return false;
    errno = planned->second;
    return true;
}

bool StatFails(const char* call) {
    ++theRecord.stats;
    if (Fails(call)) return true;
    const bool isTime = !theScript.statFailsOnlyAfterWrite || theRecord.writes > 0;
    if (!theScriptRuns || theScript.statError == 0 || !isTime) return false;
    errno = theScript.statError;
    return true;
}

/// What the test does after a call may make calls too: those are left alone.
template <typename Result>
Result Done(Result result) {
    if (!theScriptRuns || !theScript.after) return result;
    const int error = errno;
    const auto after = std::exchange(theScript.after, nullptr);
    after();
    theScript.after = after;
    errno = error;
    return result;
}

bool Interrupts(std::size_t calls) {
    if (!theScriptRuns || !theScript.interrupts || calls % 2 == 0) return false;
    ++theRecord.interruptions;
    return true;
}

std::size_t Bounded(std::size_t size) {
    return theScriptRuns && theScript.atMost != 0 ? std::min(size, theScript.atMost) : size;
}

void NoteMode(const char* call, mode_t mode) {
    char text[64] = "";
    std::snprintf(text, sizeof text, "%s %o", call, mode & 07777U);
    if (theScriptRuns) theRecord.attributeCalls.emplace_back(text);
}

void NoteOwner(uid_t user, gid_t group) {
    // As the caller means it: -1 leaves it as it is.
    const std::string text =
        "owner " + std::to_string(static_cast<int>(user)) + ":" + std::to_string(static_cast<int>(group));
    if (theScriptRuns) theRecord.attributeCalls.push_back(text);
}

bool ModeFails(const char* call) {
    if (Fails(call)) return true;
    if (!theScriptRuns || theScript.modeError == 0 || theRecord.writes == 0) return false;
    errno = theScript.modeError;
    return true;
}
}  // namespace

SystemCalls::SystemCalls(const SystemCallScript& script) {
    theScript = script;
    theRecord = {};
    theScriptRuns = true;
}

SystemCalls::~SystemCalls() {
    theScriptRuns = false;
}

const SystemCallRecord& SystemCalls::Record() const {
    return theRecord;
}

}  // namespace ZET

// The linker gives the calls of this program these functions instead (--wrap).
extern "C" {
int __real_stat(const char* path, struct stat* status);
int __real_lstat(const char* path, struct stat* status);
int __real_fstat(int file, struct stat* status);
int __real_fstatat(int directory, const char* path, struct stat* status, int flags);
ssize_t __real_read(int file, void* bytes, std::size_t size);
ssize_t __real_write(int file, const void* bytes, std::size_t size);
int __real_chmod(const char* path, mode_t mode);
int __real_fchmod(int file, mode_t mode);
int __real_fchown(int file, uid_t user, gid_t group);
int __real_ftruncate(int file, off_t size);
mode_t __real_umask(mode_t mask);
int __real_close(int file);
void* __real_mremap(void* address, std::size_t formerSize, std::size_t size, int flags, ...);

int __wrap_stat(const char* path, struct stat* status) {
    return ZET::StatFails("stat") ? -1 : __real_stat(path, status);
}

int __wrap_lstat(const char* path, struct stat* status) {
    return ZET::StatFails("lstat") ? -1 : __real_lstat(path, status);
}

int __wrap_fstat(int file, struct stat* status) {
    return ZET::StatFails("fstat") ? -1 : __real_fstat(file, status);
}

int __wrap_fstatat(int directory, const char* path, struct stat* status, int flags) {
    return ZET::StatFails("fstatat") ? -1 : __real_fstatat(directory, path, status, flags);
}

ssize_t __wrap_read(int file, void* bytes, std::size_t size) {
    ++ZET::theRecord.reads;
    if (ZET::Interrupts(ZET::theRecord.reads)) return ZET::Failed(EINTR);
    if (ZET::theScriptRuns && ZET::theScript.readError != 0 && ZET::theRecord.reads > 1)
        return ZET::Failed(ZET::theScript.readError);
    return __real_read(file, bytes, ZET::Bounded(size));
}

ssize_t __wrap_write(int file, const void* bytes, std::size_t size) {
    ++ZET::theRecord.writes;
    if (ZET::Interrupts(ZET::theRecord.writes)) return ZET::Failed(EINTR);
    if (ZET::theScriptRuns && ZET::theScript.writesNothing) return 0;
    return ZET::Done(__real_write(file, bytes, ZET::Bounded(size)));
}

int __wrap_chmod(const char* path, mode_t mode) {
    ZET::NoteMode("mode", mode);
    return ZET::ModeFails("chmod") ? -1 : ZET::Done(__real_chmod(path, mode));
}

int __wrap_fchmod(int file, mode_t mode) {
    ZET::NoteMode("mode", mode);
    return ZET::ModeFails("fchmod") ? -1 : ZET::Done(__real_fchmod(file, mode));
}

int __wrap_fchown(int file, uid_t user, gid_t group) {
    ZET::NoteOwner(user, group);
    return ZET::Fails("fchown") ? -1 : ZET::Done(__real_fchown(file, user, group));
}

int __wrap_ftruncate(int file, off_t size) {
    return ZET::Fails("ftruncate") ? -1 : ZET::Done(__real_ftruncate(file, size));
}

mode_t __wrap_umask(mode_t mask) {
    ZET::NoteMode("mask", mask);
    return __real_umask(mask);
}

int __wrap_close(int file) {
    ++ZET::theRecord.closes;
    const int result = __real_close(file);
    return ZET::theScriptRuns && ZET::theScript.closeError != 0 ? ZET::Failed(ZET::theScript.closeError)
                                                                : result;
}

void* __wrap_mremap(void* address, std::size_t formerSize, std::size_t size, int flags, ...) {
    // The module lets the system choose the new place: there is no further argument.
    return ZET::Fails("mremap") ? MAP_FAILED : __real_mremap(address, formerSize, size, flags);
}
}
