#ifndef ZET_REPLACEMENT_H
#define ZET_REPLACEMENT_H

#include <sys/types.h>

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/HostProduct.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

struct FileOwner {
    uid_t user = 0;
    gid_t group = 0;
};

/// Thrown by a judge to leave the file unchanged.
struct LeftAsItIs {};

/// The one way in which a file is written, whoever makes its text. What the module made is judged before it
/// takes the file's place, the last moment at which nothing has happened yet. What another program wrote
/// since `version` is not overwritten, and a reserve that a failed write made is taken back.
class Replacement {
  public:
    /// Looks at the finished file `made`, which already has its mode. If it throws, the file stays as it is,
    /// and what was made is removed.
    using Judge = std::function<void(const std::string& made)>;

    /// The same with the open file; -1 if this user cannot open it.
    using JudgeOfOpened = std::function<void(int descriptor, const std::string& made)>;

    /// Lets the module save the file `name`.
    using Operation = std::function<void(const std::string& name)>;

    /// Whether to look at the present file now, or to rely on the look just before, when it was found.
    enum class Look { Now, WasFound };

    Replacement(HostProduct& product, const FileInPlace& file, const FileVersion& version,
                Look look = Look::Now);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Makes the reserve, unless there is one. For use within a judge, or before `Make`.
    void KeepOriginal();

    /// As `KeepOriginal`, in two steps, between which a batch may name the reserves of many files. Afterwards
    /// the file is only written if it has not changed meanwhile, so that the reserve is the original.
    void MakeReserve();
    void ConfirmReserve();

    /// The path of the reserve that the file then has; empty if it has none.
    std::string Reserve() const;

    /// `mode` is what the file is going to have; the module does not report a failure to set it.
    void Make(mode_t mode, const Operation& operation, const Judge& judge);

    /// The same, but the judge is called from within the directory, and must not look up names.
    void MakeOf(mode_t mode, const Operation& operation, const JudgeOfOpened& judge);

    /// As `Make`, for a text for which the module has no operation; it need not be judged.
    void MakeOfText(const std::string& text, mode_t mode, const Judge& judge = nullptr);

    /// A new file will belong to this owner.
    void GiveNewFileTo(const FileOwner& owner) { m_newOwner = owner; }

    /// The file as it was found.
    const FileState& Former() const { return m_former; }

    /// Does not write the file, as only the reserve was wanted.
    void LeaveFile() { m_isMade = true; }

  private:
    void Save(const Operation& operation, const std::function<void(const ZETRename& rename)>& complete);
    void RequireLastVersion();
    bool Complete(int descriptor, const std::string& path, mode_t mode) const;
    void CompleteReserve() const;
    void GiveToNewOwner(int descriptor, const std::string& path) const;
    void RemoveTemporary(const std::string& temporary) const noexcept;
    void TakeBackCompanions();
    void TellIfPossible(const std::exception& error) noexcept;

    HostProduct& m_product;
    const FileInPlace& m_file;
    const FileVersion m_version;
    bool m_isVersionSeen;  ///< it was compared just before
    const FileState m_former;
    std::vector<std::string> m_newCompanions;  ///< their suffixes; removed if the write fails
    std::optional<FileOwner> m_newOwner;
    bool m_hadReserve = false;
    bool m_makesReserve = false;
    bool m_mayBeMade = false;
    bool m_isMade = false;
};

/// Throws a `Failure` if somebody wrote the file since `version`.
void RequireSame(const std::string& path, const FileVersion& present, const FileVersion& version);
void RequireVersion(const FileInPlace& file, const FileVersion& version);

/// Puts the reserve back, if there is one, and drops the record that there was no file. Throws a `Failure`,
/// and puts nothing back, if somebody wrote the file since `version`.
void RestoreOriginal(HostProduct& product, const FileInPlace& file, const FileVersion& version);

/// The same, but a file without a reserve, which is recorded not to have existed before, is removed.
void PutBackAsItWas(HostProduct& product, const FileInPlace& file, const FileVersion& version);

}  // namespace ZET::Deploy

#endif
