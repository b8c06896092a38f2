#ifndef ZET_FILE_PART_H
#define ZET_FILE_PART_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/targets/Deployment.h"
#include "zet/IZETConfigFile.h"
#include "zet/deploy/EditOptions.h"

namespace ZET::Deploy {

/// The lines of a file that an edit is about.
struct FilePart {
    std::string_view lines;
    std::size_t linesBefore = 0;
};

/// The lines of the section with that name; for an empty name those before the first section, and without a
/// name all lines. They are a part of `text`, which must outlive them. Throws a `Failure` unless there is
/// exactly one such section.
FilePart PartOf(const std::string& path, std::string_view text, const std::optional<std::string>& section);

/// The text with its part edited by the module, which gets the part as a file of its own. With markers, the
/// result has a notice.
std::string TextWithPart(Deployment& product, const std::string& text, const FilePart& part, bool noMarkers,
                         const std::function<void(IZETConfigFile& file)>& edit);

/// The operation for `FileEdit` that edits the part as the options say. `text` is that of the whole file.
std::function<void(const std::string& path)> EditOfPart(
    Deployment& product, const EditOptions& options, const std::string& path, const std::string& text,
    const FilePart& part, const std::function<void(IZETConfigFile& file)>& edit);

}  // namespace ZET::Deploy

#endif
