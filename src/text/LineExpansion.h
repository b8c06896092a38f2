#ifndef ZET_LINE_EXPANSION_H
#define ZET_LINE_EXPANSION_H

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "zet/ZETTypes.h"

namespace ZET::Text {

/// Expands one line as the module does: a value replaces its placeholder and is searched in turn. The rest of
/// the line is stored in reverse, so that its next byte is the last one and replacing a placeholder moves no
/// other byte.
class LineExpansion {
  public:
    enum class Verdict { Fine, NoValue, NoEnd, Endless };

    /// The most that a line may grow beyond its own size.
    static constexpr std::size_t kLongestLine = std::size_t{16} << 20;

    /// `longestKey` is the size of the longest key of `values`. The placeholders that are found are added to
    /// `used`, unless it is null.
    LineExpansion(std::string_view line, const StringMap& values, std::size_t longestKey,
                  std::set<std::string>* used);

    /// Continues to the next problem; `Fine` at the end of the line. Must not be called again after `NoEnd`
    /// and `Endless`.
    Verdict Next();

    const std::string& Placeholder() const { return m_placeholder; }

    /// The column where the line's own placeholder that led to the verdict begins; in bytes, from 1.
    int Column() const { return static_cast<int>(m_column); }

    /// Keeps the expanded line from now on, up to `most` bytes.
    void Keep(std::size_t most) { m_most = most; }
    const std::string& Expanded() const { return m_expanded; }

  private:
    std::size_t FindEnd();
    void Skip(std::size_t count);
    bool GoToPlaceholder();
    bool Replace(std::size_t end, const std::string& value);

    const StringMap& m_values;
    std::size_t m_longestKey;
    std::set<std::string>* m_used;
    std::string m_left;
    std::size_t m_lineSize;
    std::size_t m_lineLeft;  ///< how many bytes of `m_left` are the line's own; the rest comes from values
    std::size_t m_written = 0;
    std::size_t m_replacements = 0;
    std::size_t m_column = 0;
    std::size_t m_end = std::string::npos;  ///< where the next "}" is, if nothing was put before it
    std::string m_placeholder;
    std::string m_expanded;
    std::size_t m_most = 0;
};

}  // namespace ZET::Text

#endif
