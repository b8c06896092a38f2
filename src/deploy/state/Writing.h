#ifndef ZET_WRITING_H
#define ZET_WRITING_H

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "deploy/host/Signals.h"
#include "deploy/state/HostProduct.h"
#include "deploy/state/Lock.h"

namespace ZET::Deploy {

/// A `Failure` when the file's directory is missing, or cannot be written. In a dry run, a right that this
/// user lacks is a warning.
void RequireUsableDirectory(Host& host, const std::string& path);

/// What a command holds that writes files: signals wait for the end of a step, other commands wait for the
/// lock, and the temporary files of a killed run are told from those of others. A dry run holds nothing.
class Writing {
  public:
    /// Whether the caller has to have a right on the product's directory, or only on the files.
    enum class Right {
        OfTheProduct,
        OfTheProductIfAny,  ///< who has none needs only that on the files
        OfTheFiles          ///< and nothing is recorded where no texts are kept
    };

    /// A `Failure` when one of the files (links followed) could not be written without harm: its directory is
    /// missing, or something that is not ours has the name of a temporary file or a reserve.
    Writing(HostProduct& product, const std::vector<std::string>& paths, Right right = Right::OfTheFiles,
            Purpose purpose = Purpose::Writes);

    /// A `Failure` like that of the constructor, for a file that is known only now.
    void RequireRoom(const std::string& path) const;

    /// From here on, the files are written: a signal that came is heard now.
    static void Begin() { SignalGuard::Check(); }

    /// Whether the history can be written.
    bool Records() const { return m_records; }

  private:
    void Lock(HostProduct& product, const std::vector<std::string>& paths, Right right);

    HostProduct& m_product;
    std::set<std::string> m_cutShort;  ///< files of killed runs that nobody has cleared up after yet
    bool m_canRecord = true;           ///< whether this user may
    bool m_records;
    SignalGuard m_signals;
    std::unique_ptr<WriteLock> m_lock;
};

}  // namespace ZET::Deploy

#endif
