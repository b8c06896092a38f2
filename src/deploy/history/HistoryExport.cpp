#include "deploy/history/HistoryExport.h"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <utility>

#include "deploy/history/FastImport.h"
#include "deploy/history/HistoryEntries.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

/// The branch that a repository begins with, whatever its name is.
constexpr char kBranch[] = "HEAD";
constexpr char kNobodyKnown[] = "others";
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::string RelativePath(const std::string& name) {
    return name.substr(std::min(name.find_first_not_of('/'), name.size()));
}

bool IsExecutable(const RecordedState& state) {
    return (state.mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
}

std::string MessageOf(const HistoryEntry& entry) {
    std::string text = CommandOf(entry) + "\n";
    if (!entry.message.empty()) text += "\n" + entry.message + "\n";
    text += "\nChange: " + std::to_string(entry.number) + "\nRole: " + NameOf(entry.role) + "\n";
    return entry.outcome == "done" ? text : text + "Outcome: " + entry.outcome + "\n";
}

class Exporter {
  public:
    Exporter(const HistoryReader& reader, std::ostream& stream)
        : m_reader(reader), m_stream(stream, kBranch), m_domain(reader.Product().Core().GetDomainName()) {}

    void Export() {
        std::vector<RecordedEntry> entries = m_reader.Entries();
        std::reverse(entries.begin(), entries.end());
        for (const RecordedEntry& entry : entries)
            Export(ToldEntry(m_reader, entry), m_reader.FilesOf(entry.number));
        m_stream.End();
    }

  private:
    /// What a repository can know of a file.
    struct Content {
        std::uint64_t size = 0;
        std::string digest;
        bool isExecutable = false;
        bool operator==(const Content&) const = default;
    };

    void Export(const HistoryEntry& entry, const std::vector<RecordedFile>& files) {
        const std::int64_t begun = entry.begun / kNanoseconds;
        if (std::any_of(files.begin(), files.end(),
                        [&](const RecordedFile& file) { return IsNew(file.path, file.before); })) {
            const FastImport::Signature others = Signature(kNobodyKnown, kNobodyKnown, begun);
            m_stream.Change(others, others,
                            "As it was found before change " + std::to_string(entry.number) + "\n");
            for (const RecordedFile& file : files)
                Put(file.path, file.before);
        }
        m_stream.Change(Signature(PersonOf(entry), PersonOf(entry), begun),
                        Signature(entry.userName, std::to_string(entry.user),
                                  std::max(begun, entry.ended / kNanoseconds)),
                        MessageOf(entry));
        for (const RecordedFile& file : files)
            if (file.IsPlanned()) Put(file.path, file.after);
    }

    FastImport::Signature Signature(const std::string& name, const std::string& user,
                                    std::int64_t seconds) const {
        return {name, user + "@" + m_domain, seconds};
    }

    bool IsNew(const std::string& name, const RecordedState& state) const {
        const auto known = m_tree.find(name);
        if (known == m_tree.end()) return state.exists;
        return !state.exists || known->second != ContentOf(state);
    }

    static Content ContentOf(const RecordedState& state) {
        return {state.size, state.digest, IsExecutable(state)};
    }

    void Put(const std::string& name, const RecordedState& state) {
        if (!IsNew(name, state)) return;
        if (!state.exists) {
            m_tree.erase(name);
            return m_stream.Remove(RelativePath(name));
        }
        m_tree[name] = ContentOf(state);
        m_stream.Write(RelativePath(name), IsExecutable(state), TextToExport(name, state));
    }

    std::string TextToExport(const std::string& name, const RecordedState& state) const {
        if (m_reader.Hides(name, state))
            return m_reader.PathOf(name) + ": not exported, since it is not for everybody\n";
        const std::string trouble = m_reader.WhyNotExported(state);
        return trouble.empty() ? m_reader.Text(state)
                               : m_reader.PathOf(name) + ": not exported, since " + trouble + "\n";
    }

    const HistoryReader& m_reader;
    FastImport m_stream;
    std::string m_domain;
    std::map<std::string, Content> m_tree;
};

}  // namespace

void ExportHistory(Deployment& product, std::ostream& stream) {
    const HistoryReader reader(product);
    // The caller's own may throw what it likes.
    std::ostream plain(stream.rdbuf());
    if (stream) Exporter(reader, plain).Export();
    if (!stream || !plain.flush()) {
        throw Failure({.text = _("the history could not be written whole"),
                       .remedy = _("make room where it is written to, then export it again")});
    }
}

}  // namespace ZET::Deploy
