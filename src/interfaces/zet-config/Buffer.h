#ifndef ZET_BUFFER_H
#define ZET_BUFFER_H

#include <cstddef>
#include <string_view>

namespace ZET {

/// Contiguous bytes that grow at their end. Unlike `std::string` it neither fills memory that is about to be
/// overwritten nor, where the system can remap pages, copies a large text to make it larger.
/// Running out of memory throws `std::bad_alloc` and changes nothing.
class Buffer {
  public:
    Buffer() = default;
    ~Buffer();
    Buffer(Buffer&& other) noexcept;
    Buffer& operator=(Buffer&& other) noexcept;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    std::string_view View() const { return {m_data, m_size}; }
    std::size_t Size() const { return m_size; }

    /// Forgets the bytes and keeps the memory.
    void Clear() { m_size = 0; }

    /// Makes room for `capacity` bytes in all.
    void Reserve(std::size_t capacity) {
        if (capacity > m_capacity) Grow(capacity);
    }

    void Append(std::string_view bytes);

    /// The room behind the bytes, to be filled and then declared with `Filled`.
    char* Room() { return m_data + m_size; }
    std::size_t RoomSize() const { return m_capacity - m_size; }
    void Filled(std::size_t count) { m_size += count; }

  private:
    void Grow(std::size_t capacity);
    void Release();

    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace ZET

#endif
