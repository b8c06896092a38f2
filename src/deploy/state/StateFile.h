#ifndef ZET_STATE_FILE_H
#define ZET_STATE_FILE_H

#include <functional>
#include <string>

namespace ZET::Deploy {

/// Throws a `Damage` if something else stands in the place of the state file, such as a link that leads
/// elsewhere. The file may be missing.
void RequireSoundStateFile(const std::string& file);

/// Lets `save` write the state file, which everybody may read and only its owner may write, whatever the
/// caller's umask is, or was when the file was made. It is written in place: if `save` throws, the text that
/// was there before is put back.
void SaveStateFile(const std::string& file, const std::function<void()>& save);

}  // namespace ZET::Deploy

#endif
