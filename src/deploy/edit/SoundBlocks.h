#ifndef ZET_SOUND_BLOCKS_H
#define ZET_SOUND_BLOCKS_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "deploy/state/Host.h"
#include "text/repair/TextToEdit.h"

/// Checks a file before any edit in place. The module knows the system's lines by the markers around them, so
/// that behind a damaged marker it would replace or drop the administrator's own lines for good.
namespace ZET::Deploy {

/// A file as the caller wrote it, and where it is.
struct FileToLookAt {
    const std::string& named;
    const std::string& path;
};

/// Is shown lines of a file, and the number of lines before these.
using AlsoLook = std::function<void(std::string_view lines, std::size_t before)>;

/// Throws a `Failure` if the file's blocks are damaged, or if it is UTF-16. `also` is shown the same lines.
/// With `text`, the file is not read again.
Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const AlsoLook& also = nullptr);
Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const std::string& text);

/// The same for an edit that takes notices out, too. It does not find out how the lines end.
Text::TextToEdit LookAtRegions(Host& host, const FileToLookAt& file);

}  // namespace ZET::Deploy

#endif
