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
#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

/// A file that a command is about to write.
struct ExpectedFile {
    /// What becomes of its reserve, and of the record that there was no file.
    enum class Companions { Stay, MayCome, MayGo };

    std::string path;                    ///< of the real file
    const FileInPlace* place = nullptr;  ///< where it is held; it must live as long as the recording
    std::string suffix{};                ///< behind its name: that of a companion which is expected alone
    FileKind kind = FileKind::Edit;
    Companions companions = Companions::Stay;
    std::optional<CapturedFile> before{};  ///< none: it is looked at
    std::optional<CapturedFile> after{};   ///< none: nobody knows yet
    std::optional<Knowledge> knowledge{};  ///< what is known of it then; none: as before
    std::optional<std::string> base{};     ///< what its text is made from, where that is another one
    std::optional<RecordedState> left{};   ///< what it is known as then, where that is another text
    bool wasEdited = false;                ///< what stands there is somebody else's work
    bool isPutBack = false;                ///< a former state comes back, whoever had written that
};

/// The entry of a command in the history: opened before the first byte of its files changes, and closed after
/// the last. What is recorded is on the disk before it happens.
class Recording {
  public:
    enum class Use {
        OfFiles,      ///< edits: nothing is recorded where no texts are kept, or this user cannot
        OfTheProduct  ///< commits and the like: what is known of the files is recorded in any case
    };

    /// Under the product's lock (`isLocked`), or nothing is recorded. An unusable store is a `Failure`, or,
    /// where it is not needed, reported as a warning.
    Recording(Host& host, Use use, bool isLocked, Purpose purpose = Purpose::Writes);

    /// One that was not completed is closed with what it did.
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    bool IsOn() const { return m_store != nullptr; }

    /// Whether nothing is expected.
    bool IsEmpty() const { return m_rows.empty(); }

    /// The file as it is now is its state before.
    void Expect(ExpectedFile file);

    /// What the call expects is looked up in the history at once: three system calls a file less.
    void ExpectTogether(const std::function<void()>& call);

    /// What is written is made from this file: where that is not for everybody, nor are the words.
    void IsMadeFrom(const std::string& path);

    /// The expected files are about to be prepared: what a killed run leaves of them can be told.
    void Announce();

    /// What an announced file is going to be, and whose attributes it is going to have.
    enum class Attributes { Own, OfTheFileBefore };
    void Plan(const std::string& path, CapturedFile after, Attributes attributes = Attributes::Own);

    /// Now the expected files may be written.
    void Begin();

    /// Nothing was changed after all.
    void Discard();

    /// The files were written. What became of them is known from now on. Where some may not have come to
    /// their end, each is looked at.
    void Complete(Ending ending = Ending::Done);

    /// The number of the entry; none: there is no entry.
    std::optional<std::int64_t> Number() const { return m_number; }

  private:
    struct Row {
        FileToRecord record;
        std::string path;
        std::string suffix;  ///< behind the name of the file that is held
        const FileInPlace* place = nullptr;
        bool isNew = true;  ///< not in the entry yet, or not as it is here
    };

    void OpenStore();
    void TellLossToCome(const ExpectedFile& file) const;
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
    bool IsUnkept(const RecordedState& state) const;
    bool IsLost(std::size_t row) const;
    void TellUnkept(const std::vector<std::string>& untouched) const;

    Host& m_host;
    const Purpose m_purpose;
    const StoreLimits m_limits;
    Store* m_store = nullptr;
    std::deque<Row> m_rows;
    bool m_isPrivate = false;  ///< the words of the command may hold what others may not read
    std::optional<std::int64_t> m_open;
    std::optional<std::int64_t> m_number;
};

}  // namespace ZET::Deploy

#endif
