#include "deploy/targets/EditRollback.h"

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Writers.h"
#include "deploy/targets/BareLines.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/LinesInPlace.h"
#include "deploy/targets/UnmarkedEdits.h"
#include "text/Lines.h"
#include "text/Markers.h"
#include "text/ShellWord.h"
#include "text/WithoutBlocks.h"
#include "text/repair/TextToEdit.h"

namespace ZET::Deploy {

namespace {

using Way = EditToTakeBack::Way;

/// Going back needs no history, unless it has to say what the other role has committed.
std::vector<RememberedLine> RememberedOf(Deployment& product, const KnownFile* known, bool isForced) {
    if (known == nullptr || !known->state.knowledge.base) return {};
    Store* const store = product.HostHistory().ToLookIfUsable();
    if (store == nullptr) return {};
    try {
        return RememberedIn(store->Text(*known->state.knowledge.base));
    } catch (const Failure& failure) {
        if (!isForced && product.HasCommitted(OtherRole(product.Role()))) throw;
        product.HostHistory().TellUnusable(failure);
        return {};
    }
}

/// What the commits of each role have set in the file.
struct LinesOfRoles {
    std::vector<RememberedLine> own{};
    std::vector<RememberedLine> others{};
};

LinesOfRoles SetByRoles(Deployment& product, const KnownFile* known, bool isForced) {
    LinesOfRoles lines;
    for (RememberedLine& line : RememberedOf(product, known, isForced))
        (line.role == product.Role() ? lines.own : lines.others).push_back(std::move(line));
    return lines;
}

bool Has(const std::vector<RememberedLine>& lines, std::string_view text) {
    return std::any_of(lines.begin(), lines.end(),
                       [&](const RememberedLine& line) { return line.line == text; });
}

/// Selects the blocks but those of the other role, be it that somebody changed one.
BlockTest OwnBlocks(const LinesOfRoles& lines, const std::string& text, IZETCore& core) {
    if (lines.others.empty()) return [](std::string_view) { return true; };
    const std::set<std::string> blocks = BlockLinesOf(text);
    std::vector<RememberedLine> changed;
    for (const RememberedLine& line : lines.others)
        if (!blocks.contains(line.line)) changed.push_back(line);
    return [&lines, &core, changed](std::string_view line) {
        const bool hasOneLine = line.find('\n') == std::string_view::npos;
        if (!hasOneLine || Has(lines.others, line)) return false;
        return std::none_of(changed.begin(), changed.end(), [&](const RememberedLine& set) {
            return Selects(core, set.Pattern(), std::string(line));
        });
    };
}

std::string WithoutOwnBlocks(const LinesOfRoles& lines, const std::string& text, const BlockTest& isOwn) {
    return lines.others.empty() ? Text::WithoutBlocks(text) : Text::WithoutBlocksOf(text, isOwn);
}

bool HasFormerLines(std::string_view text) {
    const std::vector<Text::TextLine> lines = Text::SplitLines(text);
    return std::any_of(lines.begin(), lines.end(), [](const Text::TextLine& line) {
        return Text::MarkerOf(line.text) == Text::Marker::FormerLine;
    });
}

/// Whether the file, if it had this text, would be what its reserve is.
bool IsAsReserve(const WrittenFile& file, const std::string& text) {
    return StateOf(file.path).mode == StateOf(file.Reserve()).mode && ReadFileBytes(file.Reserve()) == text;
}

/// Whether bringing the reserve back loses only the product's work, with or without markers.
bool IsProductsAlone(Deployment& product, const KnownFile& known, const WrittenFile& file) {
    return WritersSince(file.Reserve(), known, product) == Writers::ProductAlone;
}

std::string WordsOfOwnBlocks(Host& host) {
    const bool isDryRun = host.Wanted().dryRun;
    return Words(isDryRun
                     ? ZET_TEXT("the managed blocks would be taken out, but for those of the role %s; all "
                                "other lines stay")
                     : ZET_TEXT("the managed blocks are taken out, but for those of the role %s; all "
                                "other lines stay"),
                 RoleInWords(OtherRole(host.Role())));
}

/// The reserve stays, since the file is not the original by then.
std::string WordsOfBlocks(Host& host, const WrittenFile& file, const EditToTakeBack& edit) {
    if (!edit.others.empty()) return WordsOfOwnBlocks(host);
    const std::string taken = host.Wanted().dryRun
                                  ? _("the managed blocks would be taken out, all other lines stay")
                                  : _("the managed blocks are taken out, all other lines stay");
    if (!IsFileExist(file.Reserve())) return taken;
    const std::string name = Text::ShellWord(file.named);
    return Words(
        "%s; %s keeps what was there before (\"file restore %s\" puts it back, \"file forget %s\" drops it)",
        taken, file.Reserve(), name, name);
}

}  // namespace

EditToTakeBack LookAtEdit(Deployment& product, const KnownFiles& knownFiles, const WrittenFile& file,
                          bool isForced) {
    const KnownFile* const known = knownFiles.Find(file.path);
    const LinesOfRoles lines = SetByRoles(product, known, isForced);
    EditToTakeBack edit;
    edit.others = lines.others;
    const Way leave = lines.own.empty() ? Way::LeaveToOtherRole : Way::HandOver;
    const FileState now = StateOf(file.path);
    if (!now.exists) {
        const bool mayGoBack = file.MayGoBack();
        edit.way = mayGoBack ? Way::Reserve : Way::Forget;
        if (!edit.others.empty()) edit.way = leave;
        if (!mayGoBack) edit.remark = WordsOfNoReserve(product, file);
        return edit;
    }
    if (!now.IsRegular()) return {Way::LeaveIrregular};
    const bool isAsLeft = knownFiles.IsAsLeft(file.path);
    const std::string text = ReadFileBytes(file.path);
    const bool mayGoBack = edit.others.empty() && IsFileExist(file.Reserve());
    if (mayGoBack && isForced) return {Way::Reserve};
    if (const auto damage = Text::FindDamage(text))
        throw Failure(Text::ProblemOf(file.path, *damage, product.Wanted().program, file.path));
    const BlockTest isOwn = OwnBlocks(lines, text, product.Core());
    edit.text = WithoutOwnBlocks(lines, text, isOwn);
    edit.hasBlocks = !BlockLinesOf(text).empty();
    // A killed run may have kept the original, and done no more.
    if (mayGoBack && IsAsReserve(file, text)) return {Way::Reserve};
    if (mayGoBack && isAsLeft && IsProductsAlone(product, *known, file)) return {Way::Reserve};
    if (!isForced && known != nullptr) edit.editedBlock = EditedBlockIn(product, *known, text, isOwn);
    if (edit.editedBlock) {
        edit.way = Way::KeepEdited;
        return edit;
    }
    // Whoever wrote the file in between, nothing of theirs is left in it.
    if (mayGoBack && IsAsReserve(file, edit.text)) return {Way::Reserve};
    edit.isUnmarked = !isForced && edit.others.empty() && known != nullptr &&
                      (HoldsUnmarkedEdits(product, *known) || !BareLinesIn(product, *known, text).empty());
    if (edit.text != text) {
        edit.way = Way::Blocks;
        edit.remark = WordsOfBlocks(product, file, edit);
    } else if (!edit.others.empty()) {
        edit.way = leave;
    } else if (isAsLeft && isForced) {
        edit.remark = WordsOfNoReserve(product, file);
    } else if (isAsLeft || edit.isUnmarked) {
        edit.way = Way::Keep;
    } else {
        edit.remark = _("holds no managed block any more, stays as it is");
    }
    return edit;
}

std::string WordsOfNoReserve(Host& host, const WrittenFile& file) {
    if (IsFileExist(file.path)) return _("has no reserve, stays as it is");
    if (!IsKnownAsWritten(host, file.path)) return _("is not there");
    return Words("is not there (\"history %s\" tells what is kept of it)", Text::ShellWord(file.named));
}

std::string WordsOfKept(const WrittenFile& file, const std::string& force) {
    return Words(
        IsFileExist(file.Reserve())
            ? ZET_TEXT("was edited without markers, and may hold what others wrote, stays as it is (%s "
                       "puts back what was there before)")
            : ZET_TEXT("was edited without markers and has no reserve, stays as it is (%s forgets it)"),
        force);
}

std::string WordsOfEditedBlock(const WrittenFile& file, const EditToTakeBack& edit,
                               const std::string& force) {
    const char* const stays =
        edit.editedBlock->isFormerGone
            ? ZET_TEXT("%s:%s: what stood here before was taken out of the file, which stays (%s)")
            : ZET_TEXT("%s:%s: a managed block was edited here, and the file stays (%s)");
    const char* const way = edit.others.empty() && IsFileExist(file.Reserve())
                                ? ZET_TEXT("%s puts back what was there before")
                                : ZET_TEXT("%s takes the managed blocks out");
    return Words(stays, file.path, std::to_string(edit.editedBlock->line), Words(way, force));
}

std::string WordsOfUnmarked(const WrittenFile& file, const EditToTakeBack& edit, bool isDryRun,
                            const std::string& force) {
    constexpr const char* kTaken[2][2] = {
        {ZET_TEXT("the notice is taken out"), ZET_TEXT("the notice would be taken out")},
        {ZET_TEXT("the managed blocks are taken out"), ZET_TEXT("the managed blocks would be taken out")}};
    const char* const stays =
        HasFormerLines(edit.text)
            ? ZET_TEXT(
                  "%s; kept former lines stay (\"param restore\" or \"line restore\" brings one back), and "
                  "the file is on record (%s)")
            : ZET_TEXT("%s; what was edited without markers stays, and is on record (%s)");
    const char* const way = IsFileExist(file.Reserve()) ? ZET_TEXT("%s puts back what was there before")
                                                        : ZET_TEXT("%s forgets it");
    return Words(stays, _(kTaken[edit.hasBlocks ? 1 : 0][isDryRun ? 1 : 0]), Words(way, force));
}

}  // namespace ZET::Deploy
