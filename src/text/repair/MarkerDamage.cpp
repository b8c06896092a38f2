#include "text/repair/MarkerDamage.h"

#include "text/Lines.h"
#include "text/Words.h"

namespace ZET::Text {

namespace {

constexpr char kCarriageReturns[] = "carriage-returns";

/// Whether all lines end with a carriage return, including at least one marker line.
bool IsAllCarriageReturns(const RepairText& repair) {
    bool hasMarker = false;
    for (std::size_t i = 0; i < repair.Size(); ++i) {
        if (repair.HasLineFeed(i) && !repair.Text(i).ends_with('\r')) return false;
        hasMarker = hasMarker || (repair.HasLineFeed(i) && MarkerOf(repair.Text(i)) != Marker::None);
    }
    return hasMarker;
}

void DropCarriageReturns(RepairText& repair) {
    for (std::size_t i = 0; i < repair.Size(); ++i) {
        const std::string_view text = repair.Text(i);
        if (repair.HasLineFeed(i) && text.ends_with('\r')) repair.Replace(i, WithoutCarriageReturn(text));
    }
}

}  // namespace

void CheckLineEnds(RepairText& repair, std::optional<bool> hadCarriageReturns) {
    // If the file had them before, only those after markers are an editor's.
    if (hadCarriageReturns.value_or(false)) return;
    if (!repair.KeepsCarriageReturns() && !IsAllCarriageReturns(repair)) return;
    if (hadCarriageReturns) {
        repair.Note(0, kCarriageReturns, _("every line ends with a carriage return, and none did before"),
                    _("take them out"));
        DropCarriageReturns(repair);
        return;
    }
    repair.NoteAmbiguous(
        0, kCarriageReturns,
        _("every line ends with a carriage return, those of the system too, which wrote none"),
        {_("take all of them out, if the program that reads the file wants none"),
         _("leave them, if the file had them before the system changed it")});
    repair.KeepCarriageReturns();
}

Diagnosis DiagnoseMarkers(std::string_view text, const NoticeTexts& noticeTexts,
                          std::optional<bool> hadCarriageReturns) {
    RepairText repair(text);
    // The repairs of the first pass may resolve what was ambiguous, or complete a region whose contents are
    // then examined.
    for (int look = 1; look <= 2; ++look) {
        repair.LookAgain();
        CheckLineEnds(repair, hadCarriageReturns);
        CheckHandEdits(repair);
        CheckBlocks(repair);
        CheckNotices(repair, noticeTexts);
        if (!repair.TakeChanged()) break;
    }
    return {repair.Damages(), repair.Bytes()};
}

}  // namespace ZET::Text
