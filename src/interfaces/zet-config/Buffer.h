#ifndef ZET_BUFFER_H
#define ZET_BUFFER_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "posix/ShortText.h"

namespace ZET {

/// A piece of a text that is to be rearranged.
struct TextPiece {
    static constexpr std::size_t kOthers = static_cast<std::size_t>(-1);

    std::size_t at = kOthers;  ///< its place in the text; `kOthers` for the next of the other bytes
    std::size_t size = 0;

    bool IsOfText() const { return at != kOthers; }
};

/// Contiguous bytes that grow at their end. Unlike `std::string`, it does not fill memory that is about to be
/// overwritten and, where the system can remap pages, does not copy a large text to enlarge it; it also keeps
/// some room before a large text. Running out of memory throws `std::bad_alloc` and changes nothing.
class Buffer {
  public:
    Buffer() = default;
    ~Buffer();
    Buffer(Buffer&& other) noexcept;
    Buffer& operator=(Buffer&& other) noexcept;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    std::string_view View() const { return {m_data + m_begin, m_size}; }
    std::size_t Size() const { return m_size; }

    /// Drops the bytes but keeps the memory.
    void Clear();

    /// Makes room for `capacity` bytes in all.
    void Reserve(std::size_t capacity) {
        if (capacity > m_capacity - m_begin) Grow(capacity);
    }

    void Append(std::string_view bytes) {
        if (bytes.empty()) return;
        Reserve(m_size + bytes.size());
        CopyNear(Room(), bytes);
        m_size += bytes.size();
    }

    /// The free memory after the bytes; fill it, then declare the bytes with `Filled`.
    char* Room() { return m_data + m_begin + m_size; }
    std::size_t RoomSize() const { return m_capacity - m_begin - m_size; }
    void Filled(std::size_t count) { m_size += count; }

    /// Rearranges the bytes: the result consists of `pieces` of the present bytes, in their order, with
    /// `others` in between, and has `size` bytes in all. The longest piece stays in place if there is room
    /// for what precedes it, and no byte is moved twice.
    void Arrange(const std::vector<TextPiece>& pieces, std::string_view others, std::size_t size);

  private:
    std::size_t BeginFor(const std::vector<TextPiece>& pieces) const;
    void Move(std::size_t to, std::size_t from, std::size_t size);
    void Grow(std::size_t capacity);
    void Release();

    char* m_data = nullptr;
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace ZET

#endif
