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
#include "posix/Clock.h"

namespace ZET::Deploy {

namespace {

/// The branch that a repository begins with, whatever its name is.
constexpr char kBranch[] = "HEAD";
constexpr char kNobodyKnown[] = "others";

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
    Exporter(HistoryReader& reader, std::ostream& stream)
        : m_reader(reader), m_stream(stream, kBranch), m_domain(reader.Product().Core().GetDomainName()) {}

    /// Reads of one moment what was done, and then text by text: the reader of the stream may take his time,
    /// and nobody is to wait for him. (Only where a directory was moved, all is of one moment.)
    void Export() {
        std::vector<Change> changes;
        for (const RecordedEntry& entry : m_reader.Entries())
            changes.push_back({ToldEntry(m_reader, entry), m_reader.FilesOf(entry.number)});
        m_reader.EndLook();
        for (auto change = changes.rbegin(); change != changes.rend(); ++change)
            Export(*change);
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

    struct Change {
        HistoryEntry entry;
        std::vector<RecordedFile> files;
    };

    void Export(const Change& change) {
        const auto& [entry, files] = change;
        const std::int64_t begun = entry.begun / kNanoseconds;
        if (std::any_of(files.begin(), files.end(),
                        [&](const RecordedFile& file) { return IsNew(file.path, file.before); })) {
            const FastImport::Signature others = Signature(kNobodyKnown, kNobodyKnown, begun);
            m_stream.Change(others, others,
                            "As it was found before change " + std::to_string(entry.number) + "\n");
            for (const RecordedFile& file : files)
                Put(entry.number, file, Side::Before);
        }
        m_stream.Change(Signature(PersonOf(entry), PersonOf(entry), begun),
                        Signature(entry.userName, std::to_string(entry.user),
                                  std::max(begun, entry.ended / kNanoseconds)),
                        MessageOf(entry));
        for (const RecordedFile& file : files)
            if (file.IsPlanned()) Put(entry.number, file, Side::After);
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

    void Put(std::int64_t number, const RecordedFile& file, Side side) {
        const std::string& name = file.path;
        const RecordedState& state = StateOn(side, file);
        if (!IsNew(name, state)) return;
        if (!state.exists) {
            m_tree.erase(name);
            return m_stream.Remove(RelativePath(name));
        }
        m_tree[name] = ContentOf(state);
        m_stream.Write(RelativePath(name), IsExecutable(state), TextToExport(number, file, side));
    }

    std::string TextToExport(std::int64_t number, const RecordedFile& file, Side side) const {
        RecordedState state = StateOn(side, file);
        const std::string path = m_reader.PathOf(file.path);
        if (m_reader.Hides(file.path, state)) return path + ": not exported, since it is not for everybody\n";
        const auto look = m_reader.LookAgain();
        const std::optional<RecordedFile> now = m_reader.ChangeIn(number, file.path);
        if (!now || StateOn(side, *now).text != state.text) state.text.reset();
        const std::string trouble = m_reader.WhyNotExported(state);
        return trouble.empty() ? m_reader.Text(state) : path + ": not exported, since " + trouble + "\n";
    }

    HistoryReader& m_reader;
    FastImport m_stream;
    std::string m_domain;
    std::map<std::string, Content> m_tree;
};

}  // namespace

void ExportHistory(Deployment& product, std::ostream& stream) {
    HistoryReader reader(product);
    // The caller's own may throw what it likes.
    std::ostream plain(stream.rdbuf());
    if (stream) Exporter(reader, plain).Export();
    if (!stream || !plain.flush()) {
        throw Failure({.text = _("the history could not be written whole"),
                       .remedy = _("make room where it is written to, then export it again")});
    }
}

}  // namespace ZET::Deploy
