#ifndef ZET_FILE_IN_PLACE_H
#define ZET_FILE_IN_PLACE_H

#include <sys/stat.h>
#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/PathWalk.h"
#include "deploy/host/Rights.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// A file that a command is about to write: the way to it was judged, and its directory is held, so that
/// nobody leads the command elsewhere by renaming directories. Core and module work on it from within that
/// directory, under a name that is told to nobody.
class FileInPlace {
  public:
    /// The module finds its own main file itself, by its path.
    enum class Access { FromWithinItsDirectory, ByPath };

    /// `found` is where the path that the caller named leads, and `path` how the reader knows what is there.
    /// A `Failure` when it is in no directory, or when somebody could lead root, who runs the command, to
    /// another file on the way.
    FileInPlace(FoundFile found, const std::string& path, Access access = Access::FromWithinItsDirectory);

    /// As its reader knows it.
    const std::string& Path() const { return m_path; }

    /// The user other than root in whose directory it is, if root runs the command.
    const std::optional<uid_t>& Holder() const { return m_holder; }

    /// As it was when it was found; none: there was no such file.
    const std::optional<struct stat>& Found() const { return m_found.status; }

    /// The directory, and the file's name in it; valid as long as the object.
    int Directory() const { return m_found.directory->descriptor; }
    const std::string& NameInDirectory() const { return m_found.name; }

    /// Calls `call(name)`, in the directory, where the file is called `name`. Where the directory lies with
    /// another user than root, with his rights only. What the core and the module say of the file names it as
    /// its reader knows it.
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

    /// From within `Within`: calls `call()` in the directory and with the rights of before.
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

    /// As long as it lives, each visit of this thread comes back to the directory that is the present one
    /// now, which is opened once instead of for each.
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

        /// Asks for no memory: what was begun in the directory can be cleared up when there is none.
        void Enter();
        void Leave() noexcept;

      private:
        void FindWay();
        std::string ReadablePath(const std::string& path) const;

        const FileInPlace& m_file;
        Descriptor m_own;      ///< the directory of before, where nobody else holds it
        int m_former = -1;     ///< likewise, whoever holds it; none where it is not left
        std::string m_prefix;  ///< before names in the directory
        std::string m_name;
        std::optional<RightsOf> m_rights;
        std::optional<ZETLogWording> m_formerWording;
    };

    static Visit* Suspend();
    static void Resume(Visit* visit);

    static thread_local Visit* s_visit;             ///< the present one
    static thread_local const Descriptor* s_start;  ///< the directory to come back to, where that is held

    std::string m_path;
    FoundFile m_found;
    Access m_access;
    std::optional<uid_t> m_holder;
};

}  // namespace ZET::Deploy

#endif
