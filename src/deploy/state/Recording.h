#ifndef ZET_RECORDING_H
#define ZET_RECORDING_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "deploy/host/FileInPlace.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/Host.h"
#include "deploy/state/Settling.h"
#include "deploy/state/Writes.h"
#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

/// A file that a command is about to write.
struct ExpectedFile {
    /// What becomes of its reserve, and of the record that there was no file.
    enum class Companions { Stay, MayCome, MayGo };

    std::string path;                    ///< of the real file
    const FileInPlace* place = nullptr;  ///< where it is held; must outlive the recording
    std::string suffix{};                ///< after its name: that of a companion which is expected alone
    FileKind kind = FileKind::Edit;
    Companions companions = Companions::Stay;
    std::optional<CapturedFile> before{};    ///< none: the file is looked at
    std::optional<CapturedFile> after{};     ///< none: not known yet
    std::optional<Knowledge> knowledge{};    ///< what is known of it afterwards; none: as before
    std::optional<std::string> base{};       ///< what its text is made from, if that is another text
    std::optional<RecordedState> knownAs{};  ///< what it is known as afterwards, if that is another text
    bool wasEdited = false;                  ///< what stands there is somebody else's work
    bool isPutBack = false;                  ///< a former state comes back, whoever wrote it
};

/// The entry of a command in the history. It is opened before the first byte of the command's files changes,
/// and closed after the last. What is recorded is on the disk before it happens.
class Recording {
  public:
    enum class Use {
        OfFiles,      ///< edits: nothing is recorded where no texts are kept, or this user cannot
        OfTheProduct  ///< commits and the like: what is known of the files is recorded in any case
    };

    /// Records only under the product's lock (`isLocked`). An unusable store is a warning if `purpose` does
    /// not need it, else a `Failure`. A dry run records nothing, and reports of files that the run could not.
    Recording(Host& host, Use use, bool isLocked, Purpose purpose = Purpose::Writes);

    /// If the entry was not completed, closes it with what was done.
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    bool IsOn() const { return m_store != nullptr; }

    /// Whether no file is expected.
    bool IsEmpty() const { return m_rows.empty(); }

    /// Adds a file that the command is about to write. Its state before is the present one.
    void Expect(ExpectedFile file);

    /// Looks up in the history at one time all that `call` expects: three system calls less for each file.
    void ExpectTogether(const std::function<void()>& call);

    /// What is written is made from this file: if that is private, so are the command's words.
    void IsMadeFrom(const std::string& path);

    /// The expected files are about to be prepared; from now on, what a killed run leaves can be recognised.
    void Announce();

    /// States what an announced file is going to be, and whose attributes it is going to have.
    enum class Attributes { Own, OfTheFileBefore };
    void Plan(const std::string& path, CapturedFile after, Attributes attributes = Attributes::Own);

    /// From now on the expected files may be written.
    void Begin();

    /// Drops the entry: nothing was changed after all.
    void Discard();

    /// The files were written, and what became of them is known from now on. If some may not have been
    /// finished, each is looked at.
    void Complete(Ending ending = Ending::Done);

    /// The number of the entry; none if there is no entry.
    std::optional<std::int64_t> Number() const { return m_number; }

  private:
    struct Row {
        FileToRecord record;
        std::string path;
        std::string suffix;  ///< after the name of the file that is held
        const FileInPlace* place = nullptr;
        bool isNew = true;  ///< the entry does not have it yet, or not as it is here
    };

    void OpenStore();
    void TellWhyNot() const;
    void ExpectWithCompanions(ExpectedFile file);
    void ExpectCompanionsToGo(ExpectedFile& companion);
    void ExpectCompanionToCome(ExpectedFile& companion);
    template <typename Call>
    void OrGoOnWithout(Call call);
    CapturedFile Before(const Row& row) const;
    Row RowOf(ExpectedFile& file, const std::string& suffix) const;
    static Row RowOfReserve(const Row& file);
    std::vector<FileToRecord> NewFiles();
    CapturedFile Now(const Row& row) const;
    CapturedFile AfterSuccess(const Row& row) const;
    Settlement Settled(Ending ending) const;
    void Close(EntryOutcome outcome, Ending ending);

    Host& m_host;
    const Purpose m_purpose;
    const StoreLimits m_limits;
    Store* m_store = nullptr;
    std::deque<Row> m_rows;
    Writes m_writes;
    bool m_isPrivate = false;  ///< the words of the command may hold what others must not read
    std::optional<std::int64_t> m_open;
    std::optional<std::int64_t> m_number;
};

}  // namespace ZET::Deploy

#endif
