#ifndef ZET_EDITS_H
#define ZET_EDITS_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "deploy/edit/SoundBlocks.h"
#include "deploy/state/Session.h"
#include "zet/IZETConfigFile.h"

/// What the commands about one file have in common: finding and opening it, and what "param", "line" and
/// "option" do with a lookup or an edit.
namespace ZET {

/// A file that was seen to be readable, freshly opened: a lookup that finds nothing spoils the object for an
/// edit.
std::shared_ptr<IZETConfigFile> OpenedFile(Session& session, const std::string& path, bool noMarkers);

/// The caller's FILE to look something up or to edit it in: the real file, checked to be readable.
std::string FileToRead(Session& session, const std::string& file);

/// The same for a text that the caller asks for.
std::string FileToShow(Session& session, const std::string& file);

/// A `Failure` with the remedy for a target that a commit recorded and would overwrite, unless the caller
/// wants it edited all the same.
void RequireNoTarget(Session& session, const std::string& path);

/// A `Failure` when an edit as the caller wants it would put a notice in front of a first line that has to
/// stay the first.
void RequireRoomForNotice(Session& session, const std::string& path, const TextToEdit& text);

/// A line that is going to be set in that text, with an end like the others there; mixed ends are told.
std::string LineToSet(Session& session, const std::string& path, const TextToEdit& text,
                      const std::string& line);

/// What to do when an edited file could not be saved: the module does not say why.
inline constexpr char kRemedyOfSaving[] =
    "make room, or see to the rights of its directory; nothing was changed";

/// Saves without a reserve.
void SaveEdited(IZETConfigFile& file);

/// Reports what was looked up, under `key` ("value", "line"), and returns the exit status: a lookup that
/// found nothing is told by that alone.
int ReportLookup(Session& session, const std::string& what, const char* key,
                 const std::optional<std::string>& found);

/// The operation of `FileChange` that edits as the caller's options say.
std::function<void(const std::string& path)> Edit(Session& session,
                                                  const std::function<void(IZETConfigFile& file)>& edit);

}  // namespace ZET

#endif
