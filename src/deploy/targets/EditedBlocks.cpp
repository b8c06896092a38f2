#include "deploy/targets/EditedBlocks.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "deploy/state/History.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

namespace {

struct Block {
    std::string lines;                  ///< without the markers
    std::optional<std::string> former;  ///< what comes in its place
    std::size_t line = 0;

    std::pair<std::string, bool> Made() const { return {lines, former.has_value()}; }
};

std::vector<Block> BlocksOf(std::string_view text) {
    const Text::ManagedText managed(text);
    std::vector<Block> blocks;
    for (const Text::ManagedRegion& region : managed.Regions()) {
        if (region.kind != Text::RegionKind::Block) continue;
        Block block;
        block.line = region.first + 1;
        for (std::size_t number = region.first; number <= region.last; ++number) {
            if (!managed.Line(number).IsContent()) continue;
            if (!block.lines.empty()) block.lines += '\n';
            block.lines += managed.Line(number).text;
        }
        if (region.formerLine != 0) block.former = managed.FormerText(region.formerLine);
        blocks.push_back(std::move(block));
    }
    return blocks;
}

/// The blocks that the product made, by their lines: whether they had former lines when they were made last.
class MadeBlocks {
  public:
    explicit MadeBlocks(Store& store) : m_store(store) {}

    /// Goes back to the first change. What was there before the oldest one that is kept counts as made, since
    /// nobody can tell. False if a text is not kept.
    bool Find(const std::string& path) {
        const std::vector<RecordedFile> changes = m_store.ChangesOf(path);
        const RecordedFile* oldest = nullptr;
        for (const RecordedFile& change : changes) {
            if (!Read(change)) return false;
            oldest = &change;
            if (change.kindBefore == FileKind::Original && !change.isPutBack) break;
        }
        if (oldest != nullptr) Add(BlocksBefore(*oldest), {});
        return oldest != nullptr;
    }

    const std::set<bool>* Of(const Block& block) const {
        const auto made = m_made.find(block.lines);
        return made == m_made.end() ? nullptr : &made->second;
    }

  private:
    bool Read(const RecordedFile& change) {
        if ((change.before.exists && !change.before.text) || (change.after.exists && !change.after.text))
            return false;
        if (change.isPutBack || change.staysKnown || !change.after.exists) return true;
        std::set<std::pair<std::string, bool>> there;
        for (const Block& block : BlocksBefore(change))
            there.insert(block.Made());
        Add(BlocksOf(m_store.Text(*change.after.text)), there);
        return true;
    }

    std::vector<Block> BlocksBefore(const RecordedFile& change) {
        if (!change.before.exists) return {};
        return BlocksOf(m_store.Text(*change.before.text));
    }

    /// Leaves out those that newer changes have made, too.
    void Add(const std::vector<Block>& blocks, const std::set<std::pair<std::string, bool>>& there) {
        std::map<std::string, std::set<bool>> made;
        for (const Block& block : blocks)
            if (!there.contains(block.Made())) made[block.lines].insert(block.former.has_value());
        m_made.merge(made);
    }

    Store& m_store;
    std::map<std::string, std::set<bool>> m_made;
};

bool HasLostFormer(const Block& block, const std::set<bool>* formers) {
    return formers != nullptr && !block.former && !formers->contains(false);
}

/// Calls back with each block that is to go and that somebody changed, as long as that returns true.
template <typename Call>
void ForEachEdited(Host& host, const KnownFile& known, std::string_view text, const BlockTest& isToGo,
                   Call call) {
    host.HostHistory().TryLook([&](Store& store) {
        MadeBlocks made(store);
        if (!made.Find(known.path)) return;
        for (const Block& block : BlocksOf(text)) {
            if (!isToGo(block.lines) || block.former == block.lines) continue;
            const std::set<bool>* const formers = made.Of(block);
            const bool isFormerGone = HasLostFormer(block, formers);
            if ((formers == nullptr || isFormerGone) && !call(block, isFormerGone)) return;
        }
    });
}

}  // namespace

std::optional<EditedBlock> EditedBlockIn(Host& host, const KnownFile& known, std::string_view text,
                                         const BlockTest& isToGo) {
    std::optional<EditedBlock> edited;
    ForEachEdited(host, known, text, isToGo, [&](const Block& block, bool isFormerGone) {
        edited = EditedBlock{block.line, isFormerGone};
        return false;
    });
    return edited;
}

std::set<std::string> LinesWithoutFormer(Host& host, const KnownFile& known, std::string_view text,
                                         const BlockTest& isToGo) {
    std::set<std::string> lines;
    ForEachEdited(host, known, text, isToGo, [&](const Block& block, bool isFormerGone) {
        if (isFormerGone) lines.insert(block.lines);
        return true;
    });
    return lines;
}

}  // namespace ZET::Deploy
