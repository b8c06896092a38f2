#include "deploy/undo/MergeBack.h"

#include <string>
#include "deploy/host/Words.h"

#include "text/NoticeOfText.h"

namespace ZET::Deploy {

namespace {

class MergingBack {
  public:
    MergingBack(Store& store, const CapturedFile& now, const FileToMerge& file, bool keepsNotice)
        : m_store(store), m_file(file), m_keepsNotice(keepsNotice) {
        m_merged.file = now;
    }

    /// Steps back from the newest edit of others to the oldest, then to the state before the entries.
    MergedBack Merge(const RecordedChange& change) {
        const RecordedState* base = &change.file->after;
        for (const WorkBetween& between : change.between) {
            Step(*base, between.found);
            base = &between.left;
        }
        Step(*base, change.file->before);
        m_merged.file.state.text.reset();
        return std::move(m_merged);
    }

  private:
    void Step(const RecordedState& base, const RecordedState& wanted) {
        if (!m_merged.problems.empty()) return;
        CapturedFile& file = m_merged.file;
        if (!base.exists || !wanted.exists)
            return Refuse(_("was removed in between, which cannot be merged"));
        if (file.text.size() != file.state.size || !base.text || !wanted.text)
            return Refuse(_("cannot be merged, as not all of its texts are kept"));
        std::string text = m_store.Text(*wanted.text);
        if (m_keepsNotice)
            text = std::string(Text::WithoutNotice(file.text).notice).append(Text::WithoutNotice(text).text);
        MergedFile made = MergeFile({file.text, m_store.Text(*base.text), text}, m_file);
        m_merged.problems = std::move(made.conflicts);
        file.state = MergedAttributes(file.state, base, wanted);
        file.SetText(made.text);
    }

    void Refuse(const std::string& text) {
        m_merged.problems.push_back({.file = m_file.path, .text = text, .remedy = m_file.otherWay});
    }

    Store& m_store;
    const FileToMerge& m_file;
    const bool m_keepsNotice;
    MergedBack m_merged;
};

}  // namespace

MergedBack MergeBack(Store& store, const RecordedChange& change, const CapturedFile& now,
                     const FileToMerge& file, bool keepsNotice) {
    return MergingBack(store, now, file, keepsNotice).Merge(change);
}

}  // namespace ZET::Deploy
