#include <algorithm>
#include <iterator>

#include "Passes.h"
#include "RegionTracker.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// Tracks the managed blocks and warns of every misplaced marker.
class BlockTracker {
  public:
    BlockTracker(TextReader& text, const char* function)
        : m_region(text, function, ZETBeginMarker, ZETEndMarker) {}

    /// Takes the line read last, and returns whether it closes a block.
    bool Track(std::string_view line) {
        const RegionTracker::Line kind = m_region.Track(line);
        if (kind == RegionTracker::Line::StrayEnd) m_region.WarnOfStrayEnd();
        return kind == RegionTracker::Line::End;
    }

    bool IsInside() const { return m_region.IsInside(); }

  private:
    RegionTracker m_region;
};

/// Appends a block that holds `line`; its end marker is not yet followed by a line feed.
void AppendBlockWithoutLineFeed(TextBuilder& out, const std::string& line) {
    out.AppendLine(ZETBeginMarker);
    out.AppendLine(line);
    out.Append(ZETEndMarker);
}

}  // namespace

bool FindLine(TextReader& in, LineMatcher& matches, std::string_view& line) {
    while (in.ReadLine(line)) {
        if (matches(line)) return true;
    }
    return false;
}

void SetLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches, const std::string& newLine,
                 LineStyle style) {
    BlockTracker block(in, "SetLine");
    bool found = false;
    // Unchanged lines are copied together, not one by one: 13 instructions less for each.
    std::string_view unchanged = in.Rest();
    std::string_view line;
    while (in.ReadLine(line)) {
        block.Track(line);
        if (!matches(line)) continue;
        found = true;
        out.Copy(unchanged.substr(0, static_cast<std::size_t>(line.data() - unchanged.data())));
        unchanged = in.Rest();
        if (style == LineStyle::Bare || block.IsInside()) {
            out.Append(newLine);
            out.EndLine(newLine.empty());
        } else {
            out.Append(ZETFormerLinePrefix);
            out.AppendLine(line);
            AppendBlockWithoutLineFeed(out, newLine);
            out.EndLine(false);
        }
    }
    out.Copy(unchanged);
    if (found) return;
    // The line feed ends a last line that had none; after a line that had one, it leaves an empty line.
    out.Append("\n");
    if (style == LineStyle::Bare) {
        out.AppendLine(newLine);
    } else {
        AppendBlockWithoutLineFeed(out, newLine);
        out.Append("\n");
    }
}

void RestoreLinePass(TextReader& in, TextBuilder& out, LineMatcher& matches) {
    constexpr std::size_t kPrefixLength = std::size(ZETFormerLinePrefix) - 1;
    BlockTracker block(in, "RestoreLine");
    std::string_view line;
    while (in.ReadLine(line)) {
        if (block.Track(line)) continue;
        // The core is called for every line, even inside a block, although nothing of a block is kept.
        if (matches(line)) line.remove_prefix(std::min(kPrefixLength, line.size()));
        if (!block.IsInside()) out.CopyLine(line);
    }
}

}  // namespace ZET
