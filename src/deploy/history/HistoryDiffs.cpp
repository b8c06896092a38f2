#include "deploy/history/HistoryDiffs.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "deploy/history/HistoryEntries.h"
#include "deploy/history/TextDiffer.h"
#include "deploy/targets/ShownDiff.h"

namespace ZET::Deploy {

namespace {

class DiffsOfHistory {
  public:
    explicit DiffsOfHistory(Deployment& product) : m_reader(product) {}

    const HistoryReader& Reader() const { return m_reader; }

    HistoryDiff Of(const RecordedFile& file) {
        HistoryDiff result;
        result.file = ToldFile(m_reader, file);
        if (!file.IsPlanned() || HaveSameText(file.before, file.after)) return result;
        for (const RecordedState* state : {&file.before, &file.after}) {
            result.trouble = m_reader.WhyNotKept(*state);
            if (!result.trouble.empty()) return result;
        }
        result.diff = ShownDiffOf(file);
        return result;
    }

    /// The files that changed after `older` up to `newer`, each with its first and its last state. Relies on
    /// entries coming from the newest to the oldest.
    std::vector<RecordedFile> Between(std::int64_t older, std::int64_t newer) const {
        std::vector<RecordedFile> files;
        std::unordered_map<std::string, std::size_t> places;
        for (const RecordedEntry& entry : m_reader.Entries()) {
            if (entry.number > newer || entry.number < older) continue;
            for (RecordedFile& file : m_reader.FilesOf(entry.number))
                Take(files, places, std::move(file), entry.number == older);
        }
        return files;
    }

  private:
    /// `places` has the index in `files` of each path that was taken.
    static void Take(std::vector<RecordedFile>& files, std::unordered_map<std::string, std::size_t>& places,
                     RecordedFile file, bool isStart) {
        const auto known = places.find(file.path);
        if (known != places.end()) {
            files[known->second].before = isStart ? file.after : file.before;
        } else if (!isStart) {
            places.emplace(file.path, files.size());
            files.push_back(std::move(file));
        }
    }

    ShownDiff ShownDiffOf(const RecordedFile& file) {
        std::string texts[2];
        const std::string* sides[2] = {nullptr, nullptr};
        for (const Side side : {Side::Before, Side::After}) {
            const RecordedState& state = StateOn(side, file);
            const auto i = static_cast<std::size_t>(side);
            if (!state.exists) continue;
            texts[i] = m_reader.Text(state);
            sides[i] = &texts[i];
        }
        const std::string path = m_reader.PathOf(file.path);
        const bool isHidden = m_reader.Hides(file.path, file.before) || m_reader.Hides(file.path, file.after);
        ShownDiff diff;
        diff.text = m_differ.Diff(sides[0], sides[1], path);
        diff.isPrivate = isHidden;
        if (!isHidden) return diff;
        return WithoutText(std::move(diff), path, m_reader.Product().HostSecrets().Excuse(path));
    }

    HistoryReader m_reader;
    TextDiffer m_differ;
};

/// For a comparison that goes from a newer entry to an older one.
RecordedFile Reversed(RecordedFile file) {
    std::swap(file.before, file.after);
    return file;
}

std::vector<RecordedFile> ComparedFiles(const DiffsOfHistory& comparison, std::int64_t number,
                                        std::optional<std::int64_t> to) {
    if (!to) return comparison.Reader().FilesOf(number);
    const auto [older, newer] = std::minmax(number, *to);
    if (newer - older > 1) comparison.Reader().RequireAllKeptAfter(older);
    std::vector<RecordedFile> files = comparison.Between(older, newer);
    if (*to < number) std::transform(files.begin(), files.end(), files.begin(), Reversed);
    return files;
}

}  // namespace

std::vector<HistoryDiff> DiffHistory(Deployment& product, std::int64_t number, std::optional<std::int64_t> to,
                                     const std::string& file) {
    DiffsOfHistory comparison(product);
    comparison.Reader().Entry(number);
    if (to) comparison.Reader().Entry(*to);
    const std::string name = file.empty() ? "" : comparison.Reader().NameOf(file);
    if (!to && !name.empty()) comparison.Reader().FileOf(number, name);
    std::vector<HistoryDiff> diffs;
    for (const RecordedFile& each : ComparedFiles(comparison, number, to))
        if (name.empty() || each.path == name) diffs.push_back(comparison.Of(each));
    return diffs;
}

}  // namespace ZET::Deploy
