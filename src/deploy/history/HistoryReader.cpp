#include "deploy/history/HistoryReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>

#include "deploy/host/Failure.h"
#include "deploy/host/FileName.h"
#include "deploy/host/Words.h"
#include "deploy/state/KeptEntries.h"
#include "deploy/state/KnownFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

bool LacksText(const RecordedState& state) {
    return state.exists && !state.text;
}

Store* StoreOf(Deployment& product) {
    History& history = product.HostHistory();
    if (history.IsDenied()) {
        throw Failure({.file = product.State().Store(),
                       .text = _("the history may not be read by this user"),
                       .remedy = _("run the command as root")});
    }
    return history.ToLook();
}

/// First with all links followed as they lead now, then without following the file itself, which may have
/// become a link.
std::vector<std::string> NamesOfPath(const Paths& paths, const std::string& file) {
    const std::string written = paths.HasRoot()
                                    ? std::filesystem::path("/" + file).lexically_normal().string()
                                    : paths.WithRealDirectory(file, PathWalk::Unseen::IsTakenAsWritten);
    return {paths.NameInside(paths.Canonical(file)), paths.HasRoot() ? written : paths.NameInside(written)};
}

std::string NumbersOf(const std::vector<RecordedEntry>& entries) {
    constexpr std::size_t kMost = 5;
    std::string text;
    for (std::size_t i = 0; i < std::min(entries.size(), kMost); ++i)
        text += (text.empty() ? "" : ", ") + std::to_string(entries[i].number);
    return entries.size() > kMost ? text + ", ..." : text;
}

}  // namespace

std::vector<std::string> NamesBeside(const std::string& name) {
    return {name, name + ZETReserveSuffix, name + ZETAbsenceSuffix};
}

HistoryReader::HistoryReader(Deployment& product)
    : m_product(product), m_store(StoreOf(product)), m_look(HasAny() ? m_store->LookUnlessOpen() : nullptr) {
    if (!HasAny()) return;
    for (const RecordedEntry& entry : m_store->OpenEntries())
        m_open.insert(entry.number);
}

std::vector<RecordedEntry> HistoryReader::Entries(std::size_t count) const {
    return HasAny() ? m_store->Entries(count) : std::vector<RecordedEntry>();
}

std::vector<RecordedFile> HistoryReader::FilesOf(std::int64_t number) const {
    std::vector<RecordedFile> files = m_store->FilesOf(number);
    for (RecordedFile& file : files)
        file = AsDone(number, std::move(file));
    return files;
}

std::optional<RecordedFile> HistoryReader::ChangeIn(std::int64_t number, const std::string& name) const {
    std::optional<RecordedFile> file = m_store->ChangeIn(number, name);
    return file ? std::optional(AsDone(number, std::move(*file))) : std::nullopt;
}

bool HistoryReader::IsToRemove(std::int64_t number, const std::string& name) const {
    const std::optional<RecordedFile> file = m_store->ChangeIn(number, name);
    return file && !file->after.exists;
}

RecordedFile HistoryReader::AsDone(std::int64_t number, RecordedFile file) const {
    if (!m_open.contains(number)) return file;
    const std::string path = PathOf(file.path);
    if (m_product.HostPaths().StaysInside(path) && IsAsRecorded(path, file.after)) return file;
    RecordedState planned;
    planned.exists = true;
    planned.knowledge = std::move(file.after.knowledge);
    file.after = std::move(planned);
    return file;
}

std::vector<RecordedEntry> HistoryReader::EntriesOf(const std::string& name, std::size_t count) const {
    std::map<std::int64_t, RecordedEntry, std::greater<>> fromNewest;
    for (const std::string& each : NamesBeside(name))
        for (RecordedEntry& entry : m_store->EntriesOf(each))
            fromNewest.emplace(entry.number, std::move(entry));
    std::vector<RecordedEntry> entries;
    for (auto& [number, entry] : fromNewest)
        if (entries.size() < count) entries.push_back(std::move(entry));
    return entries;
}

void HistoryReader::RequireAllKeptAfter(std::int64_t number) const {
    Deploy::RequireAllKeptAfter(*m_store, number, ZET_TEXT("compare with one from %s on"));
}

bool HistoryReader::Knows(const std::string& name) const {
    return m_store->Known(name) || !EntriesOf(name, 1).empty();
}

std::string HistoryReader::NameOf(const std::string& file) const {
    RequireFileName(file);
    if (auto name = FindName(file)) return std::move(*name);
    throw UsageError(HasAny() ? Words("%s: is not in the history (\"history\" tells the files that are)",
                                      PathOf(NamesOfPath(m_product.HostPaths(), file).front()))
                              : Words("%s: nothing was recorded yet on this host",
                                      PathOf(NamesOfPath(m_product.HostPaths(), file).front())));
}

std::optional<std::string> HistoryReader::FindName(const std::string& file) const {
    if (!HasAny()) return std::nullopt;
    for (std::string& name : NamesOfPath(m_product.HostPaths(), file))
        if (Knows(name)) return std::optional(std::move(name));
    return std::nullopt;
}

std::int64_t HistoryReader::LastNumber() const {
    return HasAny() ? LastNumberOf(*m_store) : 0;
}

RecordedEntry HistoryReader::Entry(std::int64_t number) const {
    if (!HasAny()) FailOfNoHistory(m_product, number);
    return KeptEntry(*m_store, number);
}

RecordedFile HistoryReader::FileOf(std::int64_t number, const std::string& name) const {
    const std::string what = Words("change %s", std::to_string(Entry(number).number));
    if (std::optional<RecordedFile> file = ChangeIn(number, name)) return std::move(*file);
    throw UsageError(Words("%s: %s did not write it (those that did: %s)", PathOf(name), what,
                           NumbersOf(m_store->EntriesOf(name))));
}

std::string HistoryReader::WhyNotKept(const RecordedState& state) const {
    return LacksText(state) ? Words(ReasonOfLack(state), std::to_string(state.size)) : "";
}

std::string HistoryReader::WhyNotExported(const RecordedState& state) const {
    return LacksText(state) ? Text::Filled(ReasonOfLack(state), {std::to_string(state.size)}) : "";
}

const char* HistoryReader::ReasonOfLack(const RecordedState& state) const {
    return state.size > m_product.HostHistory().Limits().largestText
               ? ZET_TEXT("its text of %s bytes is not kept: it is larger than ZET_HISTORY_MAX_FILE")
               : ZET_TEXT(
                     "its text of %s bytes is not kept: it was erased, or was larger than "
                     "ZET_HISTORY_MAX_FILE then");
}

/// A file that a commit wrote and that is in no list any more may have been secret there.
Secrets::Audience HistoryReader::AudienceOf(const std::string& name, const RecordedState& state) const {
    using Audience = Secrets::Audience;
    const std::string path = PathOf(name);
    const Audience now = m_product.HostSecrets().Of(path);
    if (now != Audience::Everybody && now != Audience::Readers) return now;
    if (state.knowledge.IsCommitted() && m_product.Lists().TargetOf(path) == nullptr) return Audience::Nobody;
    return state.exists && (state.mode & S_IROTH) == 0 ? Audience::Readers : now;
}

bool HistoryReader::Hides(const std::string& name, const RecordedState& state) const {
    return !m_product.Wanted().showsSecrets && AudienceOf(name, state) != Secrets::Audience::Everybody;
}

}  // namespace ZET::Deploy
