#ifndef ZET_STATE_FILE_H
#define ZET_STATE_FILE_H

#include <functional>
#include <string>

namespace ZET::Deploy {

/// A `Damage` when what stands in the place of the state file is none: a link, say, that leads elsewhere. It
/// may be missing.
void RequireSoundStateFile(const std::string& file);

/// What `save` writes into the state file is everybody's to read, and its owner's alone to write, whatever
/// the caller's umask is, and was when the file was made.
void SaveStateFile(const std::string& file, const std::function<void()>& save);

}  // namespace ZET::Deploy

#endif
