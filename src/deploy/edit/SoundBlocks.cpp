#include "deploy/edit/SoundBlocks.h"

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/targets/FileOrigin.h"
#include "text/FirstLine.h"

namespace ZET::Deploy {

namespace {

Text::TextToEdit WithoutDamage(Host& host, const FileToLookAt& file, Text::LookAtText& look,
                               const std::function<std::string()>& whole) {
    const auto damage = look.Damage(whole);
    if (damage) throw Failure(Text::ProblemOf(file.path, *damage, host.Wanted().program, file.named));
    Text::TextToEdit found = look.Found();
    if (Text::IsUtf16(found.firstLine))
        throw Failure({.file = file.path,
                       .text = _("is UTF-16, in which an edit finds no line and could write none"),
                       .remedy = _("save the file as UTF-8, without a byte order mark")});
    return found;
}

Text::TextToEdit LookAtFile(Host& host, const FileToLookAt& file, const Text::NoticeTexts* noticeTexts,
                            const AlsoLook& also) {
    Text::LookAtText look(noticeTexts);
    ReadChunks(file.path, [&](std::string_view lines) {
        const std::size_t before = look.LineCount();
        look.Take(lines);
        if (also) also(lines, before);
    });
    return WithoutDamage(host, file, look, [&] { return ReadFileBytes(file.path); });
}

}  // namespace

Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const AlsoLook& also) {
    return LookAtFile(host, file, nullptr, also);
}

Text::TextToEdit LookAtBlocks(Host& host, const FileToLookAt& file, const std::string& text) {
    Text::LookAtText look(nullptr);
    look.Take(text);
    return WithoutDamage(host, file, look, [&] { return text; });
}

Text::TextToEdit LookAtRegions(Host& host, const FileToLookAt& file) {
    const Text::NoticeTexts noticeTexts = WrittenNoticeTexts(host.Core());
    return LookAtFile(host, file, &noticeTexts, nullptr);
}

}  // namespace ZET::Deploy
