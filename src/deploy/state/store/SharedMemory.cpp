#include "deploy/state/store/SharedMemory.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/statfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include "deploy/state/store/StoreNames.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

namespace {

// Older headers of the kernel lack some of the names.
constexpr std::uint32_t kCifs = 0xFF534D42;
constexpr std::uint32_t kSmb2 = 0xFE534D42;
constexpr std::uint32_t kOfNetwork[] = {
    NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, kCifs, kSmb2, V9FS_MAGIC, AFS_SUPER_MAGIC, CODA_SUPER_MAGIC,
};

bool IsOfNetwork(int file) {
    struct statfs system = {};
    // A number that may be negative, with more bits than the name has.
    return fstatfs(file, &system) == 0 &&
           std::find(std::begin(kOfNetwork), std::end(kOfNetwork),
                     static_cast<std::uint32_t>(system.f_type)) != std::end(kOfNetwork);
}

/// Only where memory is short, it may be possible later.
bool CanBeMapped(int file) {
    constexpr std::size_t kPage = 4096;
    void* const mapped = mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED) return errno == ENOMEM;
    munmap(mapped, kPage);
    return true;
}

}  // namespace

bool CanShareMemory(const std::string& file) {
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
    const CreationMask mask(kOfOwnerAlone);
    const Descriptor memory(open((file + kMemorySuffix).c_str(), kFlags, S_IRUSR | S_IWUSR));
    return !memory.IsOpen() || (!IsOfNetwork(memory) && CanBeMapped(memory));
}

}  // namespace ZET::Deploy
