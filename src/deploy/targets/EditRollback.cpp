#include "deploy/targets/EditRollback.h"

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/state/Writers.h"
#include "deploy/targets/LinesInPlace.h"
#include "text/WithoutBlocks.h"
#include "text/repair/TextToEdit.h"

namespace ZET::Deploy {

namespace {

using Way = EditToTakeBack::Way;

void RequireSound(const std::string& path, const std::string& text) {
    const auto damage = Text::FindDamage(text);
    if (!damage) return;
    throw Failure({.file = path,
                   .line = static_cast<int>(damage->line),
                   .text = damage->text,
                   .remedy = "\"doctor " + path + "\" tells a repair"});
}

std::vector<RememberedLine> RememberedOf(Deployment& product, const KnownFile* known) {
    if (known == nullptr || !known->state.knowledge.base) return {};
    Store* const store = product.HostHistory().ToLookIfUsable();
    return store == nullptr ? std::vector<RememberedLine>()
                            : RememberedIn(store->Text(*known->state.knowledge.base));
}

/// What the other role has set, and what still stands in blocks of it. Whether this role has set some is told
/// in `isOfBoth`.
std::vector<RememberedLine> LinesOfOthers(Deployment& product, const KnownFile* known,
                                          const std::string& text, bool& isOfBoth) {
    const std::set<std::string> blocks = BlockLinesOf(text);
    std::vector<RememberedLine> others = RememberedOf(product, known);
    const auto isOwn = [&](const RememberedLine& line) { return line.role == product.Role(); };
    isOfBoth = std::any_of(others.begin(), others.end(), isOwn);
    std::erase_if(others,
                  [&](const RememberedLine& line) { return isOwn(line) || !blocks.contains(line.line); });
    return others;
}

std::string WithoutBlocksBut(const std::vector<RememberedLine>& others, const std::string& text) {
    if (others.empty()) return Text::WithoutBlocks(text);
    return Text::WithoutBlocksOf(text, [&](std::string_view line) {
        return std::none_of(others.begin(), others.end(),
                            [&](const RememberedLine& other) { return other.line == line; });
    });
}

/// Whether nothing but the product's work is lost when the reserve comes back. Where nobody can tell who
/// wrote the file in between, the rest of it has to be the reserve.
bool IsProductsAlone(Deployment& product, const KnownFile* known, const WrittenFile& file,
                     const std::string& rest) {
    const Writers writers =
        known == nullptr ? Writers::NotKept : WritersSince(file.Reserve(), *known, product);
    if (writers != Writers::NotKept) return writers == Writers::ProductAlone;
    return StateOf(file.path).mode == StateOf(file.Reserve()).mode && ReadFileBytes(file.Reserve()) == rest;
}

}  // namespace

EditToTakeBack LookAtEdit(Deployment& product, const KnownFiles& known, const WrittenFile& file,
                          bool isForced) {
    const FileState now = StateOf(file.path);
    if (!now.exists) {
        const bool isLeft = file.IsLeft();
        return {isLeft ? Way::Reserve : Way::Forget, isLeft ? "" : "is not there"};
    }
    if (!now.IsRegular()) return {Way::Keep, "is no regular file, stays as it is"};
    const KnownFile* const record = known.Find(file.path);
    const bool isAsLeft = known.IsAsLeft(file.path);
    const std::string text = ReadFileBytes(file.path);
    EditToTakeBack edit;
    edit.others = LinesOfOthers(product, record, text, edit.isOfBoth);
    const bool mayGoBack = edit.others.empty() && IsFileExist(file.Reserve());
    if (mayGoBack && isForced) return {Way::Reserve};
    RequireSound(file.path, text);
    edit.text = WithoutBlocksBut(edit.others, text);
    if (mayGoBack && (isAsLeft || record == nullptr) && IsProductsAlone(product, record, file, edit.text))
        return {Way::Reserve};
    if (edit.text != text) {
        edit.way = Way::Blocks;
        edit.remark = "the managed blocks are taken out, all other lines stay";
    } else if (!edit.others.empty()) {
        edit.way = Way::LeaveToOtherRole;
    } else if (isAsLeft) {
        edit.way = Way::Keep;
        edit.remark = IsFileExist(file.Reserve())
                          ? "was edited without markers, and by others, too, stays as it is"
                          : "was edited without markers and has no reserve, stays as it is";
    } else {
        edit.remark = "holds no managed block any more, stays as it is";
    }
    return edit;
}

}  // namespace ZET::Deploy
