#include "FileCalls.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

namespace ZET::Faults {

namespace {

template <std::size_t Size>
bool IsOneOf(const Call& call, const int (&numbers)[Size]) {
    return std::find(numbers, numbers + Size, static_cast<int>(call.number)) != numbers + Size;
}

constexpr int kModeAtWithFlags = 452;  // fchmodat2, which older headers do not name

constexpr int kCallsOnPaths[] = {
    SYS_open,       SYS_creat,       SYS_stat,         SYS_lstat,     SYS_access,    SYS_rename,
    SYS_mkdir,      SYS_rmdir,       SYS_link,         SYS_unlink,    SYS_symlink,   SYS_readlink,
    SYS_chmod,      SYS_chown,       SYS_lchown,       SYS_mknod,     SYS_truncate,  SYS_getxattr,
    SYS_lgetxattr,  SYS_statfs,      SYS_setxattr,     SYS_listxattr, SYS_lsetxattr, SYS_utimes,
    SYS_llistxattr, SYS_removexattr, SYS_lremovexattr, SYS_chdir,     SYS_chroot,    SYS_utime};

constexpr int kCallsOnPathsInDirectories[] = {
    SYS_openat,     SYS_openat2,    SYS_newfstatat,        SYS_statx,
    SYS_faccessat,  SYS_faccessat2, SYS_renameat,          SYS_mkdirat,
    SYS_renameat2,  SYS_linkat,     SYS_unlinkat,          SYS_symlinkat,
    SYS_readlinkat, SYS_fchmodat,   SYS_fchownat,          SYS_mknodat,
    SYS_utimensat,  SYS_futimesat,  SYS_name_to_handle_at, kModeAtWithFlags};

constexpr int kCallsOnDescriptors[] = {
    SYS_read,      SYS_write,     SYS_close,     SYS_fstat,           SYS_lseek,     SYS_pread64,
    SYS_pwrite64,  SYS_readv,     SYS_writev,    SYS_fsync,           SYS_fdatasync, SYS_ftruncate,
    SYS_fallocate, SYS_fchmod,    SYS_fchown,    SYS_getdents64,      SYS_fcntl,     SYS_flock,
    SYS_ioctl,     SYS_fsetxattr, SYS_fgetxattr, SYS_flistxattr,      SYS_fstatfs,   SYS_fremovexattr,
    SYS_sendfile,  SYS_syncfs,    SYS_fchdir,    SYS_copy_file_range, SYS_dup,       SYS_dup2,
    SYS_dup3,      SYS_preadv,    SYS_pwritev,   SYS_sync_file_range};

constexpr int kOtherCalls[] = {SYS_pipe,     SYS_pipe2,  SYS_sync,         SYS_mmap,   SYS_mremap,
                               SYS_mprotect, SYS_getcwd, SYS_memfd_create, SYS_unshare};

constexpr int kLookingCalls[] = {
    SYS_read,       SYS_pread64,     SYS_readv,      SYS_preadv,    SYS_close,      SYS_stat,
    SYS_fstat,      SYS_lstat,       SYS_newfstatat, SYS_statx,     SYS_statfs,     SYS_fstatfs,
    SYS_access,     SYS_faccessat,   SYS_faccessat2, SYS_readlink,  SYS_readlinkat, SYS_lseek,
    SYS_getxattr,   SYS_lgetxattr,   SYS_fgetxattr,  SYS_listxattr, SYS_llistxattr, SYS_flistxattr,
    SYS_getdents64, SYS_fcntl,       SYS_flock,      SYS_mmap,      SYS_mremap,     SYS_mprotect,
    SYS_getcwd,     SYS_chdir,       SYS_fchdir,     SYS_dup,       SYS_dup2,       SYS_dup3,
    SYS_pipe,       SYS_pipe2,       SYS_fsync,      SYS_fdatasync, SYS_sync,       SYS_syncfs,
    SYS_unshare,    SYS_memfd_create};

constexpr int kCreatingCalls[] = {SYS_mkdir,   SYS_mkdirat,   SYS_link,  SYS_linkat,
                                  SYS_symlink, SYS_symlinkat, SYS_mknod, SYS_mknodat};

constexpr int kWritingCalls[] = {SYS_write,     SYS_pwrite64,        SYS_writev,  SYS_fallocate,
                                 SYS_fsetxattr, SYS_copy_file_range, SYS_sendfile};

bool IsOpen(const Call& call) {
    return call.number == SYS_open || call.number == SYS_openat || call.number == SYS_openat2;
}

bool IsOnStandardStream(const Call& call) {
    return TakesDescriptor(call) && call.arguments[0] <= STDERR_FILENO;
}

}  // namespace

bool IsFileCall(const Call& call) {
    if (call.number == SYS_write && call.arguments[0] == STDERR_FILENO) return false;
    return PathOf(call) != nullptr || TakesDescriptor(call) || IsOneOf(call, kOtherCalls);
}

const char* PathOf(const Call& call) {
    if (IsOneOf(call, kCallsOnPaths)) return reinterpret_cast<const char*>(call.arguments[0]);
    const bool isInDirectory = IsOneOf(call, kCallsOnPathsInDirectories);
    return isInDirectory ? reinterpret_cast<const char*>(call.arguments[1]) : nullptr;
}

bool TakesDescriptor(const Call& call) {
    return IsOneOf(call, kCallsOnDescriptors);
}

int OpenFlags(const Call& call) {
    if (!IsOpen(call)) return 0;
    if (call.number == SYS_openat2)
        return static_cast<int>(reinterpret_cast<const open_how*>(call.arguments[2])->flags);
    return static_cast<int>(call.arguments[call.number == SYS_open ? 1 : 2]);
}

bool CreatesFile(const Call& call) {
    return (OpenFlags(call) & O_CREAT) != 0 || IsOneOf(call, kCreatingCalls);
}

bool WritesFile(const Call& call) {
    return IsOneOf(call, kWritingCalls) && !IsOnStandardStream(call);
}

bool MayChangeFiles(const Call& call) {
    if (IsOpen(call)) return (OpenFlags(call) & (O_CREAT | O_TRUNC)) != 0;
    return !IsOneOf(call, kLookingCalls) && !IsOnStandardStream(call);
}

bool CanBeShort(const Call& call) {
    return call.number == SYS_read || call.number == SYS_write || call.number == SYS_copy_file_range;
}

Call Shortened(const Call& call) {
    Call shorter = call;
    // How much there is to read, the kernel alone knows.
    long long& size = shorter.arguments[call.number == SYS_copy_file_range ? 4 : 2];
    size = call.number == SYS_write ? std::max(std::min(size, 1LL), size / 2) : std::min(size, 1LL);
    return shorter;
}

}  // namespace ZET::Faults
