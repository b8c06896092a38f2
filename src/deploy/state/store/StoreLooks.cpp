#include "deploy/state/store/Erasure.h"
#include "deploy/state/store/KeptTexts.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/Store.h"
#include "deploy/state/store/StoreGuard.h"

/// The calls that read the store. Where one reads several rows, others may remove some of them meanwhile,
/// which is no damage.
namespace ZET::Deploy {

std::vector<RecordedEntry> Store::Entries(std::size_t count, std::optional<std::int64_t> before) {
    return Guarded([&] {
        const auto look = LookUnlessOpen();
        std::vector<RecordedEntry> entries;
        for (const std::int64_t number : Numbers(
                 *m_database,
                 "SELECT number FROM entries WHERE ?1 IS NULL OR number < ?1 ORDER BY number DESC LIMIT ?2",
                 {OptionalValue(before), static_cast<std::int64_t>(count)}))
            entries.push_back(RequiredEntry(*m_database, number));
        return entries;
    });
}

std::vector<RecordedEntry> Store::EntriesOf(const std::string& path) {
    return Guarded([&] {
        const auto look = LookUnlessOpen();
        std::vector<RecordedEntry> entries;
        for (const std::int64_t number : Numbers(
                 *m_database, "SELECT DISTINCT entry FROM files WHERE path = ? ORDER BY entry DESC", {path}))
            entries.push_back(RequiredEntry(*m_database, number));
        return entries;
    });
}

std::vector<RecordedEntry> Store::OpenEntries() {
    return Guarded([&] {
        const auto look = LookUnlessOpen();
        std::vector<RecordedEntry> entries;
        for (const std::int64_t number :
             Numbers(*m_database, "SELECT number FROM entries WHERE outcome = 0 ORDER BY number"))
            entries.push_back(RequiredEntry(*m_database, number));
        return entries;
    });
}

std::optional<RecordedEntry> Store::Find(std::int64_t number) {
    return Guarded([&] { return EntryAt(*m_database, number); });
}

std::vector<RecordedFile> Store::FilesOf(std::int64_t number) {
    return Guarded([&] { return FilesAt(*m_database, number); });
}

std::optional<RecordedFile> Store::ChangeIn(std::int64_t number, const std::string& path) {
    return Guarded([&] { return ChangeAt(*m_database, number, path); });
}

std::optional<RecordedFile> Store::LastChangeOf(const std::string& path, std::int64_t last) {
    return Guarded([&] { return LastChangeAt(*m_database, path, last); });
}

std::optional<RecordedFile> Store::FirstChangeAfter(const std::string& path, std::int64_t entry) {
    return Guarded([&] { return FirstChangeBehind(*m_database, path, entry); });
}

std::vector<RecordedFile> Store::ChangesOf(const std::string& path) {
    return Guarded([&] { return ChangesAt(*m_database, path); });
}

/// Each entry takes a number, whether it is kept or not. An entry that was pruned may tell of all before it
/// what is missing here, and what a run that failed or was killed may have written did not become known.
std::vector<std::string> Store::WrittenUntoldAfter(std::int64_t number) {
    return Guarded([&] {
        std::vector<std::string> paths;
        Database::Rows rows(
            *m_database,
            "SELECT path FROM known WHERE kind IN (?2, ?3) AND entry > ?1"
            " AND entry NOT IN (SELECT number FROM entries)"
            " UNION SELECT path FROM files AS last WHERE kind IN (?2, ?3)"
            " AND path NOT IN (SELECT path FROM known)"
            " AND entry = (SELECT max(entry) FROM files WHERE path = last.path)"
            " AND entry >= ifnull((SELECT number FROM pruned), 0)"
            " AND (SELECT outcome FROM entries WHERE number = last.entry) = ?5"
            " AND (SELECT seq FROM sqlite_sequence WHERE name = 'entries') - max(?1, entry)"
            " > (SELECT count(*) FROM entries WHERE number > max(?1, last.entry))"
            " UNION SELECT path FROM files AS next WHERE entry > ?1 AND kind_before = ?4"
            " AND (SELECT CASE outcome WHEN ?5 THEN kind END FROM files JOIN entries ON number = entry"
            " WHERE path = next.path AND entry < next.entry"
            " AND entry >= ifnull((SELECT number FROM pruned), 0)"
            " ORDER BY entry DESC LIMIT 1) IN (?2, ?3) ORDER BY path",
            {number, static_cast<std::int64_t>(FileKind::Target), static_cast<std::int64_t>(FileKind::Edit),
             static_cast<std::int64_t>(FileKind::Original), static_cast<std::int64_t>(EntryOutcome::Done)});
        while (rows.Next())
            paths.push_back(rows.Text(0));
        return paths;
    });
}

std::optional<KnownFile> Store::Known(const std::string& path) {
    return Guarded([&] { return KnownAt(*m_database, path); });
}

std::vector<KnownFile> Store::KnownFiles() {
    return Guarded([&] { return AllKnown(*m_database); });
}

std::set<std::string> Store::CommittedTemplates() {
    return Guarded([&] {
        std::set<std::string> names;
        Database::Rows rows(
            *m_database, "SELECT DISTINCT template FROM states WHERE template <> '' AND length(roles) > 0");
        while (rows.Next())
            names.insert(rows.Text(0));
        return names;
    });
}

std::string Store::Text(TextNumber number) {
    return Guarded([&] { return TextAt(*m_database, number); });
}

std::int64_t Store::LastPruned() {
    return Guarded([&] { return FirstNumber(*m_database, "SELECT number FROM pruned"); });
}

std::int64_t Store::Version() {
    return Guarded([&] { return FirstNumber(*m_database, "PRAGMA data_version"); });
}

std::size_t Store::CountTexts(const std::vector<std::string>& paths) {
    return Guarded([&] { return CountTextsOf(*m_database, paths); });
}

}  // namespace ZET::Deploy
