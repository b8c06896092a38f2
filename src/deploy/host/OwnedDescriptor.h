#ifndef ZET_OWNED_DESCRIPTOR_H
#define ZET_OWNED_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace ZET::Deploy {

/// Closes what it holds at the end of its life.
class OwnedDescriptor {
  public:
    explicit OwnedDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    ~OwnedDescriptor() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    OwnedDescriptor(OwnedDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;
    operator int() const { return m_descriptor; }

  private:
    int m_descriptor;
};

}  // namespace ZET::Deploy

#endif
