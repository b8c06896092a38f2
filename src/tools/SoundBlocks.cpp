#include "SoundBlocks.h"

#include <functional>

#include "ExitStatus.h"
#include "FileBytes.h"
#include "FileOrigin.h"

namespace ZET {

namespace {

TextToEdit WithoutDamage(Session& session, const std::string& path, LookAtText& look,
                         const std::function<std::string()>& whole) {
    const auto damage = look.Damage(whole);
    if (!damage) return look.Found();
    const Request& asked = session.Asked();
    throw Failure(path + ":" + std::to_string(damage->line) + ": " + damage->text + " (\"" + asked.program +
                  " doctor " + asked.file + "\" tells a repair)");
}

TextToEdit LookAtFile(Session& session, const std::string& path, const NoticeTexts* noticeTexts) {
    LookAtText look(noticeTexts);
    ReadChunks(path, [&](std::string_view lines) { look.Take(lines); });
    return WithoutDamage(session, path, look, [&] { return ReadFileBytes(path); });
}

}  // namespace

TextToEdit LookAtBlocks(Session& session, const std::string& path) {
    return LookAtFile(session, path, nullptr);
}

TextToEdit LookAtBlocks(Session& session, const std::string& path, const std::string& text) {
    LookAtText look(nullptr);
    look.Take(text);
    return WithoutDamage(session, path, look, [&] { return text; });
}

TextToEdit LookAtRegions(Session& session, const std::string& path) {
    const NoticeTexts noticeTexts = WrittenNoticeTexts(session);
    return LookAtFile(session, path, &noticeTexts);
}

}  // namespace ZET
