#include "deploy/edit/SoundBlocks.h"

#include <functional>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/targets/FileOrigin.h"

namespace ZET::Deploy {

namespace {

TextToEdit WithoutDamage(HostProduct& product, const FileToLookAt& file, LookAtText& look,
                         const std::function<std::string()>& whole) {
    const auto damage = look.Damage(whole);
    if (!damage) return look.Found();
    throw Failure(
        {.file = file.path,
         .line = static_cast<int>(damage->line),
         .text = damage->text,
         .remedy = "\"" + product.Wanted().program + " doctor " + file.named + "\" tells a repair"});
}

TextToEdit LookAtFile(HostProduct& product, const FileToLookAt& file, const NoticeTexts* noticeTexts) {
    LookAtText look(noticeTexts);
    ReadChunks(file.path, [&](std::string_view lines) { look.Take(lines); });
    return WithoutDamage(product, file, look, [&] { return ReadFileBytes(file.path); });
}

}  // namespace

TextToEdit LookAtBlocks(HostProduct& product, const FileToLookAt& file) {
    return LookAtFile(product, file, nullptr);
}

TextToEdit LookAtBlocks(HostProduct& product, const FileToLookAt& file, const std::string& text) {
    LookAtText look(nullptr);
    look.Take(text);
    return WithoutDamage(product, file, look, [&] { return text; });
}

TextToEdit LookAtRegions(HostProduct& product, const FileToLookAt& file) {
    const NoticeTexts noticeTexts = WrittenNoticeTexts(product);
    return LookAtFile(product, file, &noticeTexts);
}

}  // namespace ZET::Deploy
