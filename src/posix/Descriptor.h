#ifndef ZET_POSIX_DESCRIPTOR_H
#define ZET_POSIX_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace ZET {

/// Owns an open file descriptor; -1 stands for none.
class Descriptor {
  public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_number(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        Reset(other.Release());
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const noexcept { return m_number; }
    operator int() const noexcept { return m_number; }
    bool IsOpen() const noexcept { return m_number >= 0; }

    /// Closes the present descriptor and takes ownership of `number`.
    void Reset(int number) noexcept {
        Close();
        m_number = number;
    }

    /// Returns the number, which the caller must close from now on.
    int Release() noexcept { return std::exchange(m_number, -1); }

    /// False, with `errno`, if the system reports only now that data written before was lost.
    bool Close() noexcept {
        const int number = Release();
        return number < 0 || ::close(number) == 0;
    }

  private:
    int m_number = -1;
};

}  // namespace ZET

#endif
