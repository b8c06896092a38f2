#ifndef ZET_SOUND_BLOCKS_H
#define ZET_SOUND_BLOCKS_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "deploy/state/Host.h"
#include "text/repair/TextToEdit.h"

/// What every edit in place asks first: the module takes lines for the system's by the markers around them,
/// so that behind a damaged marker an edit would replace or drop lines of the administrator's for good.
namespace ZET::Deploy {

/// A file as the caller wrote it, and where it is.
struct FileToLookAt {
    const std::string& named;
    const std::string& path;
};

/// Is shown lines of a file, and told how many came before these.
using AlsoLook = std::function<void(std::string_view lines, std::size_t before)>;

/// Damage of the file's blocks is a `Failure`, and so is UTF-16. `also` is shown the same lines. With `text`,
/// the file is not read again.
Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const AlsoLook& also = nullptr);
Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const std::string& text);

/// The same for an edit that takes the notices out, too; it does not ask how the lines end.
Text::TextToEdit LookAtRegions(Host& host, const FileToLookAt& file);

}  // namespace ZET::Deploy

#endif
