#include "Buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace ZET {

namespace {

constexpr std::size_t kSmallestCapacity = 4096;
constexpr std::size_t kHugePageSize = std::size_t{2} << 20;

/// The first touch of fresh memory costs more than scanning or copying it; huge pages make it several times
/// cheaper.
void AdviseHugePages(char* data, std::size_t size) {
    const auto address = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t begin = (address + kHugePageSize - 1) / kHugePageSize * kHugePageSize;
    const std::uintptr_t end = (address + size) / kHugePageSize * kHugePageSize;
    if (begin < end) madvise(data + (begin - address), end - begin, MADV_HUGEPAGE);
}

}  // namespace

Buffer::~Buffer() {
    std::free(m_data);
}

Buffer::Buffer(Buffer&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)) {}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    return *this;
}

void Buffer::Reserve(std::size_t capacity) {
    if (capacity <= m_capacity) return;
    capacity = std::max({capacity, m_capacity * 2, kSmallestCapacity});
    void* data = std::realloc(m_data, capacity);
    if (data == nullptr) throw std::bad_alloc();
    m_data = static_cast<char*>(data);
    m_capacity = capacity;
    AdviseHugePages(m_data, m_capacity);
}

void Buffer::Append(std::string_view bytes) {
    if (bytes.empty()) return;
    Reserve(m_size + bytes.size());
    std::memcpy(m_data + m_size, bytes.data(), bytes.size());
    m_size += bytes.size();
}

}  // namespace ZET
