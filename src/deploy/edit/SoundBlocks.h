#ifndef ZET_SOUND_BLOCKS_H
#define ZET_SOUND_BLOCKS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/state/Session.h"
#include "text/LineEnds.h"
#include "text/NoticeTexts.h"
#include "text/repair/RepairText.h"

/// What every edit in place asks first: the module takes lines for the system's by the markers around them,
/// so that behind a damaged marker an edit would replace or drop lines of the administrator's for good.
namespace ZET {

/// The first damage that makes the module misjudge which lines are a managed block's; of notices too, if
/// their texts are given. A kept former line without its block is none, nor are blanks behind a marker. A
/// text without damage, as most are, is only looked through once.
std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts = nullptr);

/// What an edit has to know of the text of its file, seen in one look.
struct TextToEdit {
    LineEnds ends;
    std::string firstLine;  ///< that is not empty
    std::size_t firstNumber = 0;
    bool hasRegions = false;  ///< managed blocks or notices
};

/// Damage of the file's blocks is a `Failure`. With `text`, the file is not read again.
TextToEdit LookAtBlocks(Session& session, const std::string& path);
TextToEdit LookAtBlocks(Session& session, const std::string& path, const std::string& text);

/// The same for an edit that takes the notices out, too; it does not ask how the lines end.
TextToEdit LookAtRegions(Session& session, const std::string& path);

}  // namespace ZET

#endif
