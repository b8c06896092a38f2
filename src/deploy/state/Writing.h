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

/// Throws a `Failure` if the file's directory is missing or cannot be written. In a dry run, a right that
/// this user lacks is only a warning.
void RequireUsableDirectory(Host& host, const std::string& path);

/// What a command holds while it writes files: signals wait for the end of a step, other commands for the
/// lock, and a killed run's temporary files can be told from those of others. A dry run takes no lock.
class Writing {
  public:
    /// Whether the caller must have a right on the product's directory, or only on the files.
    enum class Right {
        OfTheProduct,
        OfTheProductIfAny,  ///< a caller without it needs only that on the files
        OfTheFiles          ///< nothing is recorded if no texts are kept
    };

    /// Throws a `Failure` if one of the files (links followed) could not be written without harm: its
    /// directory is missing, or something of others has the name of a temporary file or a reserve.
    Writing(HostProduct& product, const std::vector<std::string>& paths, Right right = Right::OfTheFiles,
            Purpose purpose = Purpose::Writes);

    /// Throws a `Failure` as the constructor does, for a file that is known only now.
    void RequireRoom(const std::string& path) const;

    /// The files are written from here on. Throws `Interrupted` if a signal came.
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
