#ifndef ZET_RECORDED_TEXT_H
#define ZET_RECORDED_TEXT_H

#include <sys/types.h>

#include <functional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

/// Puts a recorded file back under its name or that of a companion, for which the module has no operation. As
/// the module does, it writes beside the file and has the core rename it. The file gets its owner and its
/// attributes, and then its mode, before it gets its name.
class RecordedText {
  public:
    /// `suffix` comes after the name of the file that is held; empty for the file itself.
    RecordedText(HostProduct& product, const FileInPlace& place, std::string suffix);

    /// `requireUnchanged` throws if the file must not be replaced any more; it is called last of all. A
    /// failure leaves what was there, and nothing beside it.
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
    dev_t m_device = 0;                 ///< of what was written; no inode if nothing was
    ino_t m_inode = 0;
};

}  // namespace ZET::Deploy

#endif
