#ifndef ZET_TOOLS_DESCRIPTOR_H
#define ZET_TOOLS_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace ZET {

/// Closes what it holds at the end of its life.
class Descriptor {
  public:
    explicit Descriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    Descriptor(Descriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_descriptor; }

  private:
    int m_descriptor;
};

}  // namespace ZET

#endif
