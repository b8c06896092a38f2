#ifndef ZET_STORE_DIGEST_H
#define ZET_STORE_DIGEST_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ZET::Deploy {

/// Sixteen bytes that differ for any two texts, unless somebody intends otherwise: whoever has to rely on
/// that compares the texts.
std::string DigestOf(std::string_view text);

/// The same for a text that comes in pieces.
class DigestInProgress {
  public:
    DigestInProgress();
    ~DigestInProgress();
    DigestInProgress(const DigestInProgress&) = delete;
    DigestInProgress& operator=(const DigestInProgress&) = delete;

    void Add(std::string_view bytes);
    std::string Bytes() const;

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// A shorter digest, which fits into a number.
std::int64_t SealOf(std::string_view text);

}  // namespace ZET::Deploy

#endif
