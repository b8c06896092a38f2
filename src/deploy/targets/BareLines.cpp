#include "deploy/targets/BareLines.h"

#include <set>

#include "deploy/state/History.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

namespace {

using Text::ManagedText;

bool IsOrdinary(const ManagedText& text, std::size_t number) {
    return text.RegionOf(number).kind == Text::RegionKind::Ordinary;
}

bool IsInBlock(const ManagedText& text, std::size_t number) {
    return text.RegionOf(number).kind == Text::RegionKind::Block && text.Line(number).IsContent();
}

template <typename Question>
std::set<std::string_view> LinesThat(Question isWanted, const ManagedText& text) {
    std::set<std::string_view> lines;
    for (std::size_t number = 1; number <= text.LineCount(); ++number)
        if (isWanted(text, number)) lines.insert(text.Line(number).text);
    return lines;
}

/// The lines of blocks, unless they stand outside of blocks, too, or the former line was the same.
BareLines LinesSetIn(const ManagedText& left) {
    const std::set<std::string_view> ordinary = LinesThat(IsOrdinary, left);
    BareLines set;
    for (const Text::ManagedRegion& region : left.Regions()) {
        if (region.kind != Text::RegionKind::Block || region.last != region.first + 2) continue;
        const std::string line(left.Line(region.first + 1).text);
        std::optional<std::string> former;
        if (region.formerLine != 0) former = left.FormerText(region.formerLine);
        if (former != line && !ordinary.contains(line)) set.emplace(line, std::move(former));
    }
    return set;
}

}  // namespace

BareLines BareLinesOf(std::string_view left, std::string_view text) {
    const ManagedText now(text);
    const std::set<std::string_view> ordinary = LinesThat(IsOrdinary, now);
    const std::set<std::string_view> inBlocks = LinesThat(IsInBlock, now);
    BareLines bare = LinesSetIn(ManagedText(left));
    std::erase_if(bare, [&](const auto& line) {
        return !ordinary.contains(line.first) || inBlocks.contains(line.first);
    });
    return bare;
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
        const auto bare = lines.find(std::string(line));
        if (!IsOrdinary(managed, number) || bare == lines.end()) {
            rest.append(line).append("\n");
        } else if (bare->second) {
            rest.append(*bare->second).append("\n");
        }
    }
    if (!text.ends_with('\n') && !rest.empty()) rest.pop_back();
    return rest;
}

}  // namespace ZET::Deploy
