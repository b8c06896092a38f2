#include "deploy/targets/EditRollback.h"

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
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
                   .remedy = Words("\"doctor %s\" tells a repair", path)});
}

}  // namespace

EditToTakeBack LookAtEdit(const KnownFiles& known, const WrittenFile& file, bool isForced) {
    const FileState now = StateOf(file.path);
    if (!now.exists) {
        const bool isLeft = file.IsLeft();
        return {isLeft ? Way::Reserve : Way::Forget, isLeft ? "" : _("is not there"), ""};
    }
    if (!now.IsRegular()) return {Way::Keep, _("is no regular file, stays as it is"), ""};
    const bool isAsLeft = known.IsAsLeft(file.path);
    if ((isAsLeft || isForced) && IsFileExist(file.Reserve())) return {Way::Reserve, "", ""};
    const std::string text = ReadFileBytes(file.path);
    RequireSound(file.path, text);
    std::string rest = Text::WithoutBlocks(text);
    if (rest != text)
        return {Way::Blocks, _("the managed blocks are taken out, all other lines stay"), std::move(rest)};
    if (isAsLeft) return {Way::Keep, _("was edited without markers and has no reserve, stays as it is"), ""};
    return {Way::Forget, _("holds no managed block any more, stays as it is"), ""};
}

}  // namespace ZET::Deploy
