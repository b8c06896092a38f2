#ifndef ZET_FILE_IN_PLACE_H
#define ZET_FILE_IN_PLACE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/PathWalk.h"
#include "deploy/host/Rights.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// A file that a command is about to write. The way to it was judged, and its directory is held open, so that
/// nobody can lead the command elsewhere by renaming directories. The core and the module work on the file
/// from within that directory, under a name that no message shows.
class FileInPlace {
  public:
    /// `ByPath` is for the main file, which the module finds by its path.
    enum class Access { FromWithinItsDirectory, ByPath };

    /// `found` is where the path that the caller named leads; `path` is the name that the reader knows.
    /// Throws a `Failure` if the file's directory does not exist, or if root runs the command and somebody
    /// could lead it to another file on the way.
    FileInPlace(FoundFile found, const std::string& path, Access access = Access::FromWithinItsDirectory);

    /// The path as the reader knows it.
    const std::string& Path() const { return m_path; }

    /// The only path without links.
    const std::string& RealPath() const { return m_found.path; }

    /// The user other than root to whom the directory belongs; none unless root runs the command.
    const std::optional<uid_t>& Holder() const { return m_holder; }

    /// The status from when the file was found; none if it did not exist.
    const std::optional<struct stat>& Found() const { return m_found.status; }

    /// The directory, and the file's name in it; both are valid as long as the object lives.
    int Directory() const { return m_found.directory->descriptor; }
    const std::string& NameInDirectory() const { return m_found.name; }

    /// The present state of the file, or of what stands beside it under its name with the suffix. Like
    /// `Version`, this looks in the directory that is held: its path may lead elsewhere by now. Both throw a
    /// `Failure` if they cannot tell.
    FileState State(const std::string& suffix = "") const;
    FileVersion Version() const;

    /// Calls `call(name)` in the directory, where the file is called `name`. If the directory belongs to a
    /// user other than root, `call` has only that user's rights. Messages of the core and the module name the
    /// file as the reader knows it.
    template <typename Call>
    void Within(Call call) const {
        const Visit visit(*this);
        try {
            call(visit.Name());
        } catch (const EZETHostError& error) {
            throw visit.Readable(error);
        } catch (const EZETError& error) {
            throw EZETError(visit.Readable(error.GetMessage()), error.GetDetail());
        } catch (const Failure& failure) {
            throw visit.Readable(failure);
        }
    }

    /// From within `Within`: calls `call()` in the former directory and with the former rights.
    template <typename Call>
    static void Outside(Call call) {
        Visit* const visit = Suspend();
        try {
            call();
        } catch (...) {
            Resume(visit);
            throw;
        }
        Resume(visit);
    }

    /// While it lives, each visit of this thread returns to the directory that was current on construction;
    /// that is opened once, and not for each visit.
    class Start {
      public:
        Start();
        ~Start();
        Start(const Start&) = delete;
        Start& operator=(const Start&) = delete;

      private:
        const Descriptor m_directory;
        const Descriptor* const m_outer;
    };

  private:
    class Visit {
      public:
        explicit Visit(const FileInPlace& file);
        ~Visit();
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

        const std::string& Name() const { return m_name; }
        std::string Readable(const std::string& text) const;
        EZETHostError Readable(const EZETHostError& error) const;
        Failure Readable(const Failure& failure) const;

        /// Allocates no memory: what was begun in the directory must be cleared up even if none is left.
        void Enter();
        void Leave() noexcept;

      private:
        void FindWay();
        std::string ReadablePath(const std::string& path) const;

        const FileInPlace& m_file;
        Descriptor m_own;      ///< the former directory, unless `Start` holds it
        int m_former = -1;     ///< the former directory, whoever holds it; -1 if it is not left
        std::string m_prefix;  ///< stands before names in the directory
        std::string m_name;
        std::optional<RightsOf> m_rights;
        std::optional<ZETLogWording> m_formerWording;
    };

    static Visit* Suspend();
    static void Resume(Visit* visit);

    static thread_local Visit* s_visit;             ///< null if there is none
    static thread_local const Descriptor* s_start;  ///< the directory to return to, if `Start` holds it

    std::string m_path;
    FoundFile m_found;
    Access m_access;
    std::optional<uid_t> m_holder;
};

}  // namespace ZET::Deploy

#endif
