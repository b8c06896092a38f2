#ifndef ZET_CORE_DESCRIPTOR_H
#define ZET_CORE_DESCRIPTOR_H

#include <unistd.h>

namespace ZET {

/// Owns an open file descriptor; -1 stands for none.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return m_number; }
    bool IsOpen() const { return m_number >= 0; }

    /// Takes `number` over in place of the present one.
    void Reset(int number) {
        Close();
        m_number = number;
    }

    /// False, with `errno`, when the system reports now that something written before was lost.
    bool Close() {
        const int number = m_number;
        m_number = -1;
        return number < 0 || ::close(number) == 0;
    }

  private:
    int m_number;
};

}  // namespace ZET

#endif
