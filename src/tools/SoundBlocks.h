#ifndef ZET_SOUND_BLOCKS_H
#define ZET_SOUND_BLOCKS_H

#include <optional>
#include <string>
#include <string_view>

#include "NoticeTexts.h"
#include "RepairText.h"
#include "Session.h"

/// What every edit in place asks first: the module takes lines for the system's by the markers around them,
/// so that behind a damaged marker an edit would replace or drop lines of the administrator's for good.
namespace ZET {

/// The first damage that makes the module misjudge which lines are a managed block's; of notices too, if
/// their texts are given. A kept former line without its block is none, nor are blanks behind a marker. A
/// text without damage, as most are, is only looked through once.
std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts = nullptr);

/// Throws it as a `Failure`; `text` is that of the file at `path`.
void RequireSoundBlocks(Session& session, const std::string& path, std::string_view text);

/// The same for an edit that takes the notices out, too.
void RequireSoundRegions(Session& session, const std::string& path, std::string_view text);

}  // namespace ZET

#endif
