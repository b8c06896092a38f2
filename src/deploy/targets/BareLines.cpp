#include "deploy/targets/BareLines.h"

#include <set>

#include "deploy/state/History.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

namespace {

using Text::LineKind;
using Text::ManagedText;

std::set<std::string_view> LinesOfKind(const ManagedText& text, LineKind kind) {
    std::set<std::string_view> lines;
    for (std::size_t number = 1; number <= text.LineCount(); ++number)
        if (text.Line(number).kind == kind) lines.insert(text.Line(number).text);
    return lines;
}

/// The lines of blocks, unless they stand outside of blocks, too, or the former line was the same.
BareLines LinesSetIn(const ManagedText& left) {
    const std::set<std::string_view> ordinary = LinesOfKind(left, LineKind::Ordinary);
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
    const std::set<std::string_view> ordinary = LinesOfKind(now, LineKind::Ordinary);
    const std::set<std::string_view> inBlocks = LinesOfKind(now, LineKind::BlockContent);
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
        const Text::ManagedLine& line = managed.Line(number);
        const auto bare = lines.find(std::string(line.text));
        if (line.kind != LineKind::Ordinary || bare == lines.end()) {
            rest.append(line.text).append("\n");
        } else if (bare->second) {
            rest.append(*bare->second).append("\n");
        }
    }
    if (!text.ends_with('\n') && !rest.empty()) rest.pop_back();
    return rest;
}

}  // namespace ZET::Deploy
