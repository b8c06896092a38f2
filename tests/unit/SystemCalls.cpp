#include "SystemCalls.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace ZET {

namespace {
bool theScriptRuns = false;
SystemCallScript theScript;
SystemCallRecord theRecord;

int Failed(int error) {
    errno = error;
    return -1;
}

bool StatFails() {
    ++theRecord.stats;
    const bool isTime = !theScript.statFailsOnlyAfterWrite || theRecord.writes > 0;
    return theScriptRuns && theScript.statError != 0 && isTime;
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
    if (theScriptRuns) theRecord.modeCalls.emplace_back(text);
}

bool ModeFails() {
    return theScriptRuns && theScript.modeError != 0 && theRecord.writes > 0;
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
int __real_fstat(int file, struct stat* status);
int __real_fstatat(int directory, const char* path, struct stat* status, int flags);
ssize_t __real_read(int file, void* bytes, std::size_t size);
ssize_t __real_write(int file, const void* bytes, std::size_t size);
int __real_chmod(const char* path, mode_t mode);
int __real_fchmod(int file, mode_t mode);
mode_t __real_umask(mode_t mask);
int __real_close(int file);

int __wrap_stat(const char* path, struct stat* status) {
    return ZET::StatFails() ? ZET::Failed(ZET::theScript.statError) : __real_stat(path, status);
}

int __wrap_fstat(int file, struct stat* status) {
    return ZET::StatFails() ? ZET::Failed(ZET::theScript.statError) : __real_fstat(file, status);
}

int __wrap_fstatat(int directory, const char* path, struct stat* status, int flags) {
    return ZET::StatFails() ? ZET::Failed(ZET::theScript.statError)
                            : __real_fstatat(directory, path, status, flags);
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
    return __real_write(file, bytes, ZET::Bounded(size));
}

int __wrap_chmod(const char* path, mode_t mode) {
    ZET::NoteMode("mode", mode);
    return ZET::ModeFails() ? ZET::Failed(ZET::theScript.modeError) : __real_chmod(path, mode);
}

int __wrap_fchmod(int file, mode_t mode) {
    ZET::NoteMode("mode", mode);
    return ZET::ModeFails() ? ZET::Failed(ZET::theScript.modeError) : __real_fchmod(file, mode);
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
}
