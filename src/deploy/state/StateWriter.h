#ifndef ZET_STATE_WRITER_H
#define ZET_STATE_WRITER_H

#include <optional>
#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

/// A file and what stands beside it, as it is or as it is going to be. None: that part stays as it is.
struct FileWithCompanions {
    std::optional<CapturedFile> file;
    std::optional<CapturedFile> reserve;
    std::optional<CapturedFile> absence;  ///< the record that there was no file
};

/// Whether the part is there, or is going to be.
inline bool IsThere(const std::optional<CapturedFile>& file) {
    return file && file->state.exists;
}

/// Whether the reserve only has to be renamed back, after which nothing stands beside the file.
bool GoesBackToReserve(const FileWithCompanions& now, const FileWithCompanions& wanted);

/// Whether the reserve can be made of the file as it is now.
bool IsReserveMadeOfFile(const FileWithCompanions& now, const FileWithCompanions& wanted);

/// Brings a file, with what stands beside it, to a recorded state. What comes beside it comes before the file
/// is written, and what has to go goes after that, so that at every instant what was there before the product
/// can be put back. Uses the module as far as it has an operation.
class StateWriter {
  public:
    /// `version` is that of the file when it was looked at; a later write of another program is a `Failure`.
    StateWriter(HostProduct& product, const FileInPlace& place, const FileVersion& version);

    /// `now` has every part that exists. A failure in between leaves each part old or new.
    void Bring(const FileWithCompanions& now, const FileWithCompanions& wanted);

  private:
    void MakeCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted);
    void KeepOriginal();
    void MakeUp(const char* suffix, const CapturedFile& wanted);
    void WriteFile(const FileWithCompanions& now, const FileWithCompanions& wanted);
    void RemoveCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted);
    void RequireUnchanged() const;

    HostProduct& m_product;
    const FileInPlace& m_place;
    const FileVersion m_version;
};

}  // namespace ZET::Deploy

#endif
