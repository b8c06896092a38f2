#include "deploy/targets/UnmarkedEdits.h"

#include <algorithm>
#include <optional>
#include <string>

#include "deploy/state/History.h"
#include "deploy/targets/BareLines.h"
#include "text/WithoutBlocks.h"
#include "text/repair/TextToEdit.h"

namespace ZET::Deploy {

namespace {

/// Leaves out empty lines, since one is put before a block at the end. None if the markers are damaged.
std::optional<std::string> OutsideOfBlocks(const std::string& text) {
    if (Text::FindDamage(text)) return std::nullopt;
    std::string rest = "\n" + Text::WithoutBlocks(text) + "\n";
    const auto end = std::unique(rest.begin(), rest.end(),
                                 [](char one, char next) { return one == '\n' && next == '\n'; });
    rest.erase(end, rest.end());
    return rest;
}

/// A line that had lost its markers gets them again, and what stood there before its block comes back.
std::string WithFormerLines(Store& store, const RecordedFile& change, const std::string& before) {
    const std::optional<TextNumber>& left = change.KnownBefore().text;
    return left ? WithoutBareLines(before, BareLinesOf(store.Text(*left), before)) : before;
}

bool IsUnmarked(Store& store, const RecordedFile& change) {
    if (change.kind != FileKind::Edit || !change.before.text || !change.after.text) return false;
    if (HaveSameText(change.before, change.after)) return false;
    const std::string text = store.Text(*change.before.text);
    const auto before = OutsideOfBlocks(text);
    const auto after = OutsideOfBlocks(store.Text(*change.after.text));
    if (!before || !after || *before == *after) return false;
    return !change.knownAsBefore || OutsideOfBlocks(WithFormerLines(store, change, text)) != after;
}

/// A change from a template to lines, which are set in what was there before the template.
bool IsSwitch(const RecordedFile& change) {
    return change.kind == FileKind::Edit && change.kindBefore == FileKind::Target &&
           !HaveSameText(change.before, change.after);
}

/// A text that was put back had been left by an older change: what lies between the two is not in the file
/// any more.
bool IsAnyUnmarked(Store& store, const std::string& path) {
    const RecordedState* left = nullptr;
    for (const RecordedFile& change : store.ChangesOf(path)) {
        if (left != nullptr && !HaveSameText(change.after, *left)) continue;
        left = nullptr;
        if (change.isPutBack)
            left = &change.after;
        else if (!IsSwitch(change) && IsUnmarked(store, change))
            return true;
        else if (change.kindBefore == FileKind::Original || IsSwitch(change))
            return false;
    }
    return false;
}

}  // namespace

bool HoldsUnmarkedEdits(Host& host, const KnownFile& known) {
    bool isAny = false;
    host.HostHistory().TryLook([&](Store& store) { isAny = IsAnyUnmarked(store, known.path); });
    return isAny;
}

}  // namespace ZET::Deploy
