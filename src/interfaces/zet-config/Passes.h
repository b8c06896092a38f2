#ifndef ZET_PASSES_H
#define ZET_PASSES_H

#include <string>
#include <string_view>

#include "TextReader.h"
#include "posix/ShortText.h"
#include "zet/IZETCore.h"
#include "zet/ZETTypes.h"

/// The rewriting passes over the text of a file: old text in, new text out. Each reads the text from where it
/// stands to its end. What a pass asks of the core or reports, it does line by line, in the order of the
/// lines.
namespace ZET {

/// Matches lines against one pattern through the core.
class LineMatcher {
  public:
    LineMatcher(IZETCore& core, const std::string& pattern) : m_core(core), m_pattern(pattern) {}

    bool operator()(std::string_view line) {
        // Lines are often of one length: 30 instructions instead of the 67 of `assign`.
        if (line.size() != m_subject.size()) m_subject.resize(line.size());
        CopyNear(m_subject.data(), line);
        return m_core.MatchRegEx(m_pattern, m_subject, nullptr, 0);
    }

  private:
    IZETCore& m_core;
    const std::string& m_pattern;
    std::string m_subject;  ///< used again for every line, so that a line costs no allocation
};

/// Replaces the placeholders outside comment lines by their values, and those in the values in turn.
void ApplyTemplatesPass(TextReader& in, TextBuilder& out, const StringMap& values);

/// Takes out the regions from a begin marker to the next end marker, or to the end.
void RemoveMarkersPass(TextReader& in, TextBuilder& out, const std::string& beginMarker,
                       const std::string& endMarker);

/// Puts `header` as a notice before the first line that is not empty, unless that line holds an
/// opening marker; drops the empty lines before it.
void InsertHeaderPass(TextReader& in, TextBuilder& out, const std::string& header);

/// Where a line that is set goes: bare, or kept apart from the former one by markers.
enum class LineStyle { Bare, Marked };

/// Sets every line that matches to `newLine`; appends one when none does.
void SetLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches, const std::string& newLine,
                 LineStyle style);

/// `matches` selects kept former lines, their prefix included.
void RestoreLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches);

/// The first line that matches; false when there is none, which exhausts the text.
bool FindLine(TextReader& in, LineMatcher& matches, std::string_view& line);

}  // namespace ZET

#endif
