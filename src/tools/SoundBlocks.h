#ifndef ZET_SOUND_BLOCKS_H
#define ZET_SOUND_BLOCKS_H

#include <string>

#include "Session.h"
#include "TextToEdit.h"

/// What every edit in place asks first: the module takes lines for the system's by the markers around them,
/// so that behind a damaged marker an edit would replace or drop lines of the administrator's for good.
namespace ZET {

/// Damage of the file's blocks is a `Failure`. With `text`, the file is not read again.
TextToEdit LookAtBlocks(Session& session, const std::string& path);
TextToEdit LookAtBlocks(Session& session, const std::string& path, const std::string& text);

/// The same for an edit that takes the notices out, too; it does not ask how the lines end.
TextToEdit LookAtRegions(Session& session, const std::string& path);

}  // namespace ZET

#endif
