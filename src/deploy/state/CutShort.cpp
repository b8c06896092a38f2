#include "deploy/state/CutShort.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/LeftOvers.h"
#include "deploy/state/Settling.h"

namespace ZET::Deploy {

namespace {

bool HoldsTexts(const std::vector<RecordedFile>& files) {
    return std::any_of(files.begin(), files.end(),
                       [](const RecordedFile& file) { return file.before.text.has_value(); });
}

/// The entries of one host whose runs were killed.
class CutShortEntries {
  public:
    CutShortEntries(Host& host, Store& store) : m_host(host), m_store(store) {}

    std::set<std::string> Settle() {
        for (const RecordedEntry& entry : m_store.OpenEntries())
            Settle(entry);
        return m_paths;
    }

  private:
    void Settle(const RecordedEntry& entry) {
        Settlement settlement;
        const std::vector<RecordedFile> files = m_store.FilesOf(entry.number);
        ClearLeftOversOf(files, entry.begun);
        for (const RecordedFile& file : files) {
            const std::string path = m_host.HostPaths().FromInside(file.path);
            if (!m_host.HostPaths().StaysInside(path)) {
                SettleUnseen(file, settlement);
                continue;
            }
            m_paths.insert(path);
            Settle(file, path, settlement);
        }
        // What it has of former texts was promised to be kept.
        settlement.keepsEntry = m_host.HostHistory().KeepsTexts() || HoldsTexts(files);
        m_store.Close(entry.number, EntryOutcome::CutShort, settlement);
    }

    /// Left-overs of a companion, which may have been written alone, are looked for with those of its file.
    void ClearLeftOversOf(const std::vector<RecordedFile>& rows, std::int64_t begun) {
        std::map<std::string, std::vector<RecordedFile>> byFile;
        for (const RecordedFile& row : rows)
            byFile[row.kind == FileKind::Companion ? FileBeside(row.path) : row.path].push_back(row);
        for (const auto& [name, ofFile] : byFile) {
            const std::string path = m_host.HostPaths().FromInside(name);
            if (!m_host.HostPaths().StaysInside(path)) continue;
            ClearLeftOvers(m_host, LeftBy(ofFile, path, begun));
        }
    }

    /// A new text that was left beside the file does not tell that the file was not written: it may be a copy
    /// that somebody made since.
    void Settle(const RecordedFile& file, const std::string& path, Settlement& settlement) {
        try {
            SettleFile(PlanOf(file), Capture(m_host, path), Ending::Unknown, Written::Maybe, settlement);
        } catch (const Failure& failure) {
            SettleUnseen(file, settlement);
            m_host.Out().Warning(failure.what());
        }
    }

    /// A companion has the text of its file, or none.
    CutShortFile LeftBy(const std::vector<RecordedFile>& rows, const std::string& path, std::int64_t begun) {
        CutShortFile left{.path = path, .begun = begun};
        for (const RecordedFile& row : rows) {
            if (row.kind != FileKind::Companion && !row.IsPlanned()) left.isAnyText = true;
            for (const RecordedState* const state : {&row.before, &row.after}) {
                if (!state->exists) continue;
                left.owners.insert(state->owner);
                if (state->text)
                    left.texts.push_back(m_store.Text(*state->text));
                else
                    left.whole.push_back(*state);
            }
        }
        return left;
    }

    Host& m_host;
    Store& m_store;
    std::set<std::string> m_paths;
};

}  // namespace

std::set<std::string> FilesOfCutShort(Host& host) {
    std::set<std::string> paths;
    host.HostHistory().TryLook([&](Store& store) {
        for (const RecordedEntry& entry : store.OpenEntries())
            for (const RecordedFile& file : store.FilesOf(entry.number))
                paths.insert(host.HostPaths().FromInside(file.path));
    });
    return paths;
}

std::set<std::string> SettleCutShort(Host& host, const WriteLock& lock, Purpose purpose) {
    try {
        // If nothing was ever recorded, nothing was cut short, and no store need be opened to find that out.
        if (!host.HostHistory().IsBegun(lock)) return {};
        return CutShortEntries(host, host.HostHistory().ToRecord()).Settle();
    } catch (const Failure& failure) {
        if (host.HostHistory().IsNeeded(purpose)) throw;
        host.HostHistory().TellUnusable(failure);
        return {};
    }
}

}  // namespace ZET::Deploy
