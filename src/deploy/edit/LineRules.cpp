#include "deploy/edit/LineRules.h"

#include <utility>

#include "deploy/host/LineNumbers.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "text/Continuation.h"
#include "text/Lines.h"
#include "text/Sections.h"

namespace ZET::Deploy {

namespace {

/// False if it surely has neither sections nor managed blocks.
bool MayHaveParts(std::string_view lines) {
    return lines.find('[') != std::string_view::npos ||
           lines.find(Text::kMarkerStart) != std::string_view::npos;
}

}  // namespace

LinesToReplace LookForLines(IZETCore& core, std::string_view lines, std::size_t linesBefore,
                            const NewLine& line) {
    LinesToReplace found;
    // Most large files have no parts, and one string serves all lines: together a quarter fewer instructions.
    const bool mayHaveParts = MayHaveParts(lines);
    std::string subject;
    Text::SectionFollower follower;
    std::size_t section = 0;
    bool isSetBeforeSections = false;
    std::size_t number = linesBefore;
    bool goesOn = false;
    while (!lines.empty()) {
        const std::string_view text = Text::TakeLine(lines).text;
        ++number;
        const bool continues = std::exchange(goesOn, Text::GoesOn(text) && !lines.empty());
        const bool isSame = Text::WithoutCarriageReturn(text) == line.text;
        if (isSame && !found.same) found.same = number;
        if (const auto heading = mayHaveParts ? follower.Take(text) : std::nullopt) {
            ++section;
            found.lastSection = heading->name;
        } else if (section == 0) {
            isSetBeforeSections = isSetBeforeSections || Text::IsSetting(text);
        }
        if (!Selects(core, line.pattern, subject.assign(text))) continue;
        found.isAnySelected = true;
        if (isSame) continue;
        found.changed.push_back(number);
        if (!follower.IsInBlock()) {
            std::optional<std::size_t>& first = goesOn ? found.goesOn : found.whole;
            if (!first) first = number;
            if (continues && !found.continuation) found.continuation = number;
        }
        found.sections.insert(section);
    }
    found.partCount = section + (isSetBeforeSections ? 1 : 0);
    return found;
}

bool IsPartOfLine(const LinesToReplace& found, bool noMarkers) {
    return noMarkers && found.goesOn && !found.whole;
}

std::set<std::size_t> PartedLines(const LinesToReplace& found, const NewLine& line, bool noMarkers) {
    std::set<std::size_t> parted;
    if (found.continuation && !noMarkers) parted.insert(*found.continuation - 1);
    if (found.goesOn && !(noMarkers && Text::GoesOn(line.text))) parted.insert(*found.goesOn);
    return parted;
}

void TellSections(Observer& observer, const std::string& path, const LinesToReplace& found) {
    if (found.sections.size() > 1)
        observer.Warning(Words("%s: lines %s stand in several sections, and all of them are set (%s)", path,
                               LineNumbers(found.changed),
                               found.sections.contains(0) ? _("--section or --no-section says which")
                                                          : _("--section says which")));
    if (!found.isAnySelected && found.partCount > 1)
        observer.Warning(Words(
            "%s: no line matches, and the new one comes to stand in the last section, [%s] (%s)", path,
            std::string(found.lastSection), _("--section says where, --no-section before all of them")));
}

void TellLineNotFoundAgain(Observer& observer, const std::string& path, IZETCore& core, const NewLine& line) {
    if (Selects(core, line.pattern, line.text)) return;
    observer.Warning(
        Words("%s: PATTERN selects neither a line of the file nor LINE, which is added and not "
              "found again (give a PATTERN that selects both)",
              path));
}

}  // namespace ZET::Deploy
