#ifndef ZET_STATE_WRITER_H
#define ZET_STATE_WRITER_H

#include <optional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

/// A file and what stands beside it, as it is, or as it is going to be; none: it stays as it is.
struct FileWithCompanions {
    std::optional<CapturedFile> file;
    std::optional<CapturedFile> reserve;
    std::optional<CapturedFile> absence;  ///< the record that there was no file
};

/// Whether the part is there, or is going to be.
inline bool IsThere(const std::optional<CapturedFile>& file) {
    return file && file->state.exists;
}

/// Whether only the reserve has to be renamed back, and what stood beside the file is gone then.
bool GoesBackToReserve(const FileWithCompanions& now, const FileWithCompanions& wanted);

/// Whether the reserve is made of the file as it is now.
bool IsReserveMadeOfFile(const FileWithCompanions& now, const FileWithCompanions& wanted);

/// Brings a file, with what stands beside it, from the state that it has to one that was recorded: what comes
/// beside it comes before it is written, and what goes goes after that, so that at every instant what was
/// there before the product can be put back. Through the module as far as that has an operation for it.
class StateWriter {
  public:
    /// `version` is that of the file when it was looked at: what another program wrote since is a `Failure`.
    StateWriter(HostProduct& product, const FileInPlace& place, const FileVersion& version);

    /// `now` is all that is there, each part of it. A failure in between leaves every part old or new.
    void Bring(const FileWithCompanions& now, const FileWithCompanions& wanted);

  private:
    void MakeCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted);
    void KeepOriginal();
    void MakeUp(const char* suffix, const CapturedFile& wanted);
    void WriteFile(const FileWithCompanions& now, const FileWithCompanions& wanted);
    void RemoveCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted);
    CapturedFile Present(const char* suffix) const;
    void RequireUnchanged() const;

    HostProduct& m_product;
    const FileInPlace& m_place;
    const FileVersion m_version;
};

}  // namespace ZET::Deploy

#endif
