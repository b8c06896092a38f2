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

/// Room before a large text, so that adding or replacing a notice moves nothing else.
constexpr std::size_t kRoomBefore = 4096;

/// Large memory comes straight from the system, in whole huge pages: the first touch of fresh memory costs
/// more than scanning or copying it, and huge pages make that several times cheaper. A mapping grows by
/// moving its pages, not its bytes.
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
    // For the whole mapping: advice for a part would split it, and it could no longer be moved.
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
      m_begin(std::exchange(other.m_begin, 0)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)) {}

Buffer& Buffer::operator=(Buffer&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_begin, other.m_begin);
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

void Buffer::Clear() {
    m_size = 0;
    m_begin = IsMapped(m_capacity) ? kRoomBefore : 0;
}

void Buffer::Grow(std::size_t capacity) {
    const std::size_t begin = m_size == 0 && IsMapped(capacity) ? kRoomBefore : m_begin;
    if (capacity > SIZE_MAX / 2) throw std::bad_alloc();
    capacity = RoundedCapacity(std::max(begin + capacity, m_capacity * 2));
    void* data = nullptr;
    if (!IsMapped(capacity)) {
        data = std::realloc(m_data, capacity);
    } else if (IsMapped(m_capacity)) {
        data = Remap(m_data, m_capacity, capacity);
    } else if ((data = Map(capacity)) != nullptr && m_data != nullptr) {
        std::memcpy(data, m_data, m_begin + m_size);
        std::free(m_data);
    }
    if (data == nullptr) throw std::bad_alloc();
    m_data = static_cast<char*>(data);
    m_begin = begin;
    m_capacity = capacity;
}

/// Where the new bytes must begin so that the longest piece stays in place, or moves as little as possible.
std::size_t Buffer::BeginFor(const std::vector<TextPiece>& pieces) const {
    std::size_t before = 0;
    std::size_t longest = 0;
    std::size_t begin = m_begin;
    for (const TextPiece& piece : pieces) {
        if (piece.IsOfText() && piece.size > longest) {
            longest = piece.size;
            begin = m_begin + piece.at - std::min(before, m_begin + piece.at);
        }
        before += piece.size;
    }
    return begin;
}

void Buffer::Move(std::size_t to, std::size_t from, std::size_t size) {
    std::memmove(m_data + to, m_data + from, size);
}

void Buffer::Arrange(const std::vector<TextPiece>& pieces, std::string_view others, std::size_t size) {
    const std::size_t begin = BeginFor(pieces);
    if (begin + size > m_capacity) Grow(begin + size - m_begin);
    // Pieces that move towards the begin are moved first, from the front; then those that move towards the
    // end, from the back. So none overwrites one that is still to be moved. New bytes are filled in last.
    std::size_t to = begin;
    for (const TextPiece& piece : pieces) {
        if (piece.IsOfText() && to < m_begin + piece.at) Move(to, m_begin + piece.at, piece.size);
        to += piece.size;
    }
    for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
        to -= piece->size;
        if (piece->IsOfText() && to > m_begin + piece->at) Move(to, m_begin + piece->at, piece->size);
    }
    for (const TextPiece& piece : pieces) {
        if (!piece.IsOfText()) {
            std::memcpy(m_data + to, others.data(), piece.size);
            others.remove_prefix(piece.size);
        }
        to += piece.size;
    }
    m_begin = begin;
    m_size = size;
}

}  // namespace ZET
