#ifndef ZET_RECORDED_TEXT_H
#define ZET_RECORDED_TEXT_H

#include <sys/types.h>

#include <functional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

/// A file that was recorded, on its way back to its name or to that of a companion, for which the module has
/// no operation: written beside it as the module would, and renamed by the core. It has its owner and its
/// attributes, and then its mode, before it has its name.
class RecordedText {
  public:
    /// `suffix` is behind the name of the file that is held; empty: the file itself.
    RecordedText(HostProduct& product, const FileInPlace& place, std::string suffix);

    /// `requireUnchanged` throws where it is not to be replaced any more; it is asked last of all. A failure
    /// leaves what was there, and nothing beside it.
    void Put(const CapturedFile& wanted, const std::function<void()>& requireUnchanged);

  private:
    void Write(const std::string& temporary, const std::string& text);
    bool Identify(int descriptor);
    void Complete(int descriptor, const RecordedState& wanted) const;
    bool MayHaveSetIds(const RecordedState& wanted, gid_t group) const;
    void RemoveTemporary() const noexcept;

    HostProduct& m_product;
    const FileInPlace& m_place;
    const std::string m_suffix;
    const std::string m_temporaryName;  ///< in the directory
    dev_t m_device = 0;                 ///< of what was written; no inode: nothing was
    ino_t m_inode = 0;
};

/// Gives an open file the owner, the attributes and the mode that were recorded, and no other attributes of
/// those that are recorded. A `Failure` where that cannot be; only what the label of a file is, the system
/// may refuse, which is told.
void GiveRecordedAttributes(int descriptor, const std::string& path, const RecordedState& wanted,
                            Observer& observer);

}  // namespace ZET::Deploy

#endif
