#ifndef ZET_EDITS_H
#define ZET_EDITS_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "deploy/edit/SoundBlocks.h"
#include "deploy/targets/Deployment.h"
#include "zet/IZETConfigFile.h"
#include "zet/deploy/EditOptions.h"

/// What the edits of one file have in common.
namespace ZET::Deploy {

/// Opens a file that was seen to be readable. An edit needs a fresh object: a lookup that finds nothing
/// spoils it.
std::shared_ptr<IZETConfigFile> OpenedFile(Deployment& product, const std::string& path, bool noMarkers);

/// The real path of the caller's FILE, checked to be readable.
std::string FileToRead(const Host& host, const std::string& file);

/// Throws a `UsageError` if the options name a section, for an edit that knows no sections.
void RequireWholeFile(const EditOptions& options);

/// The same for a file to edit, which must not be what is kept of another file.
std::string FileToEdit(const Host& host, const std::string& file);

/// Throws a `Failure` if the edit would put a notice before a first line that has to stay the first.
void RequireRoomForNotice(const std::string& path, const Text::TextToEdit& text, const EditOptions& options);

/// Throws a `UsageError` for a VALUE or LINE, named by `what`, that would go on in the line after it. Warns
/// of one that is forced.
void JudgeWholeLine(Observer& observer, const std::string& path, const std::string& text,
                    const std::string& what, bool isForced);

/// The line with an end like those of the text. Warns if the text has mixed ends.
std::string LineWithEnd(Observer& observer, const std::string& path, const Text::TextToEdit& text,
                        const std::string& line);

/// Saves without a reserve.
void SaveEdited(IZETConfigFile& file);

/// Has the module edit and save the file.
void EditFile(Deployment& product, const std::string& path, bool noMarkers,
              const std::function<void(IZETConfigFile& file)>& edit);

}  // namespace ZET::Deploy

#endif
