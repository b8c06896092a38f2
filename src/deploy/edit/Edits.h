#ifndef ZET_EDITS_H
#define ZET_EDITS_H

#include <cstddef>
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

/// A file that was seen to be readable, freshly opened: a lookup that finds nothing spoils the object for an
/// edit.
std::shared_ptr<IZETConfigFile> OpenedFile(Deployment& product, const std::string& path, bool noMarkers);

/// The caller's FILE to look something up in: the real file, checked to be readable.
std::string FileToRead(const Host& host, const std::string& file);

/// A `UsageError` when the options are about one section, which the edit knows nothing of.
void RequireWholeFile(const EditOptions& options);

/// The same to edit it: what is kept of another file is no file to edit.
std::string FileToEdit(const Host& host, const std::string& file);

/// A `Failure` when an edit as the caller wants it would put a notice in front of a first line that has to
/// stay the first.
void RequireRoomForNotice(const std::string& path, const Text::TextToEdit& text, const EditOptions& options);

/// The module takes a byte order mark for a part of its line, and would add another line to one that it does
/// not find behind it.
[[noreturn]] void FailOfByteOrderMark(const std::string& path, std::size_t line);

/// A line that is going to be set in that text, with an end like the others there; mixed ends are told.
std::string LineToSet(Observer& observer, const std::string& path, const Text::TextToEdit& text,
                      const std::string& line);

/// Saves without a reserve.
void SaveEdited(IZETConfigFile& file);

/// Has the module edit and save the file.
void EditFile(Deployment& product, const std::string& path, bool noMarkers,
              const std::function<void(IZETConfigFile& file)>& edit);

}  // namespace ZET::Deploy

#endif
