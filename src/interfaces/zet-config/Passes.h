#ifndef ZET_PASSES_H
#define ZET_PASSES_H

#include <string>
#include <string_view>

#include "TextReader.h"
#include "posix/ShortText.h"
#include "zet/IZETCore.h"
#include "zet/ZETTypes.h"

/// The passes that rewrite the text of a file: old text in, new text out. Each reads the text from its
/// present position to its end. Calls of the core and reports happen line by line, in the order of the lines.
namespace ZET {

/// Matches lines against one pattern through the core.
class LineMatcher {
  public:
    LineMatcher(IZETCore& core, const std::string& pattern) : m_core(core), m_pattern(pattern) {}

    bool operator()(std::string_view line) {
        // Successive lines often have the same size: 30 instructions instead of 67 for `assign`.
        if (line.size() != m_subject.size()) m_subject.resize(line.size());
        CopyNear(m_subject.data(), line);
        return m_core.MatchRegEx(m_pattern, m_subject, nullptr, 0);
    }

  private:
    IZETCore& m_core;
    const std::string& m_pattern;
    std::string m_subject;  ///< reused, so that a line costs no allocation
};

/// Replaces the placeholders outside comment lines with their values, and then the placeholders in those.
void ApplyTemplatesPass(TextReader& in, TextBuilder& out, const StringMap& values);

/// Removes the regions from a begin marker to the next end marker, or to the end of the text.
void RemoveMarkersPass(TextReader& in, TextBuilder& out, const std::string& beginMarker,
                       const std::string& endMarker);

/// Inserts `header` as a notice before the first non-empty line, unless that line contains an opening marker,
/// and drops the empty lines before it.
void InsertHeaderPass(TextReader& in, TextBuilder& out, const std::string& header);

/// How a line is set: bare, or separated from the former line by markers.
enum class LineStyle { Bare, Marked };

/// Replaces every matching line with `newLine`; appends it if none matches.
void SetLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches, const std::string& newLine,
                 LineStyle style);

/// Restores the kept former lines that `matches` selects; it is applied to lines with their prefix.
void RestoreLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches);

/// Finds the first matching line. False if there is none, which exhausts the text.
bool FindLine(TextReader& in, LineMatcher& matches, std::string_view& line);

}  // namespace ZET

#endif
