#include "deploy/targets/BareLines.h"

#include <utility>

#include "deploy/state/History.h"
#include "text/ManagedText.h"
#include "text/Sections.h"

namespace ZET::Deploy {

namespace {

using Text::ManagedText;

bool IsOrdinary(const ManagedText& text, std::size_t number) {
    return text.RegionOf(number).kind == Text::RegionKind::Ordinary;
}

/// Whether it is the one line of a block.
bool IsSetByProduct(const ManagedText& text, std::size_t number) {
    const Text::ManagedRegion& region = text.RegionOf(number);
    return region.kind == Text::RegionKind::Block && region.last == region.first + 2 &&
           text.Line(number).IsContent();
}

/// Goes through the text that the product left, and through what somebody made of it.
class LineComparison {
  public:
    LineComparison(std::string_view left, std::string_view text) : m_left(left), m_now(text) {}

    /// None if more is gone than markers, former lines, comments and empty lines, or if anything came.
    BareLines Run() {
        for (std::size_t number = 1; number <= m_left.LineCount(); ++number) {
            const std::string_view line = m_left.Line(number).text;
            PassEmptyLines();
            if (m_number <= m_now.LineCount() && m_now.Line(m_number).text == line)
                Take(number);
            else if (Text::IsSetting(line))
                return {};
        }
        PassEmptyLines();
        return m_number > m_now.LineCount() ? std::move(m_bare) : BareLines();
    }

  private:
    void PassEmptyLines() {
        while (m_number <= m_now.LineCount() && m_now.Line(m_number).text.empty())
            ++m_number;
    }

    /// A line whose former one is still there has lost its other markers alone, and is left as it is.
    void Take(std::size_t number) {
        const std::size_t kept = m_left.RegionOf(number).formerLine;
        if (IsSetByProduct(m_left, number) && IsOrdinary(m_now, m_number) &&
            (kept == 0 || kept != m_lastKept)) {
            BareLine bare{std::string(m_left.Line(number).text), std::nullopt};
            if (kept != 0) bare.former = m_left.FormerText(kept);
            if (bare.former != bare.line) m_bare.emplace(m_number, std::move(bare));
        }
        m_lastKept = number;
        ++m_number;
    }

    const ManagedText m_left;
    const ManagedText m_now;
    std::size_t m_number = 1;    ///< of the next line of the text
    std::size_t m_lastKept = 0;  ///< the last line of what was left that is still there
    BareLines m_bare;
};

}  // namespace

BareLines BareLinesOf(std::string_view left, std::string_view text) {
    return LineComparison(left, text).Run();
}

BareLines BareLinesIn(Host& host, const KnownFile& known, std::string_view text) {
    BareLines bare;
    if (!known.state.text) return bare;
    host.HostHistory().TryLook(
        [&](Store& store) { bare = BareLinesOf(store.Text(*known.state.text), text); });
    return bare;
}

std::string WithoutBareLines(std::string_view text, const BareLines& lines) {
    const ManagedText managed(text);
    std::string rest;
    for (std::size_t number = 1; number <= managed.LineCount(); ++number) {
        const std::string_view line = managed.Line(number).text;
        const auto bare = lines.find(number);
        if (bare == lines.end())
            rest.append(line).append("\n");
        else if (bare->second.former)
            rest.append(*bare->second.former).append("\n");
    }
    if (!text.ends_with('\n') && !rest.empty()) rest.pop_back();
    return rest;
}

}  // namespace ZET::Deploy
