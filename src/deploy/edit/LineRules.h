#ifndef ZET_LINE_RULES_H
#define ZET_LINE_RULES_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "zet/IZETCore.h"
#include "zet/deploy/Observer.h"

/// What an administrator should know before lines are set that a pattern selects.
namespace ZET::Deploy {

/// The line to set, without its end, and the pattern that selects the lines which it replaces.
struct NewLine {
    const std::string& pattern;
    const std::string& text;
};

/// What a text has of the lines that an edit is about.
struct LinesToReplace {
    bool isAnySelected = false;
    std::optional<std::size_t> goesOn;        ///< the first changed line that goes on in the next one
    std::optional<std::size_t> continuation;  ///< the first changed line in which the one before it goes on
    std::optional<std::size_t> whole;         ///< the first changed line that ends
    std::vector<std::size_t> changed;  ///< the numbers of the selected lines that are not the new one already
    std::set<std::size_t> sections;   ///< those of the changed lines, counted from 1; 0: before the first one
    std::optional<std::size_t> same;  ///< the first line that is the new one already
    std::size_t partCount = 0;        ///< sections, and the settings before them
    std::string_view lastSection;
};

/// `linesBefore` is the number of lines of the file before these, which must outlive the result.
LinesToReplace LookForLines(IZETCore& core, std::string_view lines, std::size_t linesBefore,
                            const NewLine& line);

/// Whether the new line takes the place of a part of a longer line, and may go on in the next one: without
/// markers, where all that it replaces do.
bool IsPartOfLine(const LinesToReplace& found, bool noMarkers);

/// The numbers of the first lines that the edit parts from the next one, in which they go on.
std::set<std::size_t> PartedLines(const LinesToReplace& found, const NewLine& line, bool noMarkers);

/// Warns where an edit of a whole file is about several sections.
void TellSections(Observer& observer, const std::string& path, const LinesToReplace& found);

/// Warns where the next edit with this pattern would not find the line that this one adds.
void TellLineNotFoundAgain(Observer& observer, const std::string& path, IZETCore& core, const NewLine& line);

}  // namespace ZET::Deploy

#endif
