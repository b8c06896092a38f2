#ifndef ZET_PROCESS_OUTPUT_H
#define ZET_PROCESS_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// What a program prints, within bounds: the begin and the end of a long text, and how much is left out.
class ProcessOutput {
  public:
    /// Keeps `kept` bytes of the begin and as many of the end; zero keeps all.
    explicit ProcessOutput(std::size_t kept) : m_kept(kept) {}

    void Append(std::string_view part);

    std::string Text() const;

  private:
    std::size_t m_kept;
    std::string m_begin;
    std::string m_end;          ///< up to twice as much as is kept of it
    std::size_t m_leftOut = 0;  ///< bytes that are in neither
};

}  // namespace ZET::Deploy

#endif
