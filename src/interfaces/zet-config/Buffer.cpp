#include "Buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace ZET {

namespace {

constexpr std::size_t kSmallestCapacity = 4096;
constexpr std::size_t kHugePageSize = std::size_t{2} << 20;

/// From here on memory comes straight from the system, whole huge pages at a time: the first touch of fresh
/// memory costs more than scanning or copying it, and huge pages make it several times cheaper. A mapping
/// grows by moving its pages, not its bytes.
bool IsMapped(std::size_t capacity) {
    return capacity >= kHugePageSize;
}

std::size_t RoundedCapacity(std::size_t capacity) {
    if (!IsMapped(capacity)) return std::max(capacity, kSmallestCapacity);
    return (capacity + kHugePageSize - 1) / kHugePageSize * kHugePageSize;
}

void* Map(std::size_t capacity) {
    void* const data = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (data == MAP_FAILED) return nullptr;
    // The whole mapping: advice for a part of it would split it, and then it could not be moved.
    madvise(data, capacity, MADV_HUGEPAGE);
    return data;
}

void* Remap(void* data, std::size_t formerCapacity, std::size_t capacity) {
    void* const moved = mremap(data, formerCapacity, capacity, MREMAP_MAYMOVE);
    return moved == MAP_FAILED ? nullptr : moved;
}

}  // namespace

Buffer::~Buffer() {
    Release();
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

void Buffer::Release() {
    if (IsMapped(m_capacity)) {
        munmap(m_data, m_capacity);
    } else {
        std::free(m_data);
    }
}

void Buffer::Grow(std::size_t capacity) {
    capacity = RoundedCapacity(std::max(capacity, m_capacity * 2));
    void* data = nullptr;
    if (!IsMapped(capacity)) {
        data = std::realloc(m_data, capacity);
    } else if (IsMapped(m_capacity)) {
        data = Remap(m_data, m_capacity, capacity);
    } else if ((data = Map(capacity)) != nullptr && m_data != nullptr) {
        std::memcpy(data, m_data, m_size);
        std::free(m_data);
    }
    if (data == nullptr) throw std::bad_alloc();
    m_data = static_cast<char*>(data);
    m_capacity = capacity;
}

void Buffer::Append(std::string_view bytes) {
    if (bytes.empty()) return;
    Reserve(m_size + bytes.size());
    std::memcpy(m_data + m_size, bytes.data(), bytes.size());
    m_size += bytes.size();
}

}  // namespace ZET
