#include "deploy/history/HistoryEntries.h"

#include <pwd.h>

#include <algorithm>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/CapturedFile.h"
#include "text/ShellWord.h"
#include "text/ShownWords.h"

namespace ZET::Deploy {

namespace {

FileOutcome::Result ResultOf(const RecordedState& before, const RecordedState& after) {
    using Result = FileOutcome::Result;
    if (before.exists != after.exists) return after.exists ? Result::Created : Result::Removed;
    return IsSameFile(before, after) ? Result::Unchanged : Result::Changed;
}

const char* NameOf(FileKind kind) {
    constexpr const char* kNames[] = {"target",    "edit",   "template",  "option",
                                      "companion", "status", "rendering", "original"};
    return kNames[static_cast<std::size_t>(kind)];
}

const char* NameOf(EntryOutcome outcome) {
    constexpr const char* kNames[] = {"not ended", "done", "failed", "cut short"};
    return kNames[static_cast<std::size_t>(outcome)];
}

/// How many words give the message, counted from this one on.
std::size_t CountOfMessageWords(const HistoryEntry& entry, std::size_t i) {
    if (entry.message.empty()) return 0;
    const std::string& word = entry.words[i];
    if (word == "-m" + entry.message || word == "--message=" + entry.message) return 1;
    const bool isOption = word == "-m" || word == "--message";
    return isOption && i + 1 < entry.words.size() && entry.words[i + 1] == entry.message ? 2 : 0;
}

/// None if the text is not kept or is damaged. Whoever asks for the text itself gets damage reported.
std::optional<std::string> ReadableText(const HistoryReader& reader, const RecordedState& state) {
    try {
        return state.text ? std::optional(reader.Text(state)) : std::nullopt;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

/// The texts of the files that are hidden. None if one of them is not kept, since any word may come from it.
std::optional<std::vector<std::string>> HiddenTexts(const HistoryReader& reader,
                                                    const std::vector<RecordedFile>& files) {
    std::vector<std::string> texts;
    for (const RecordedFile& file : files) {
        for (const RecordedState* const state : {&file.before, &file.after}) {
            if (!state->exists || !reader.Hides(file.path, *state)) continue;
            std::optional<std::string> text = ReadableText(reader, *state);
            if (!text) return std::nullopt;
            texts.push_back(std::move(*text));
        }
    }
    return texts;
}

/// A file may have become private since the words were recorded. If it was private then, the words with text
/// in them are hidden already.
std::vector<std::string> ShownWords(const HistoryReader& reader, const RecordedEntry& entry) {
    const bool isHidden = std::any_of(entry.words.begin(), entry.words.end(), [](const std::string& word) {
        return word.ends_with(Text::kHiddenWord);
    });
    // Few commands have text in their words. For the others the files, which may be thousands, are not read.
    if (isHidden || Text::WordsWithoutAnyText(entry.words) == entry.words) return entry.words;
    const std::vector<RecordedFile> files = reader.FilesOf(entry.number);
    std::vector<std::string> paths;
    for (const RecordedFile& file : files)
        paths.push_back(file.path);
    std::vector<std::string> least = Text::WordsWithoutAnyText(entry.words, paths);
    if (least == entry.words) return entry.words;
    const std::optional<std::vector<std::string>> texts = HiddenTexts(reader, files);
    return texts ? Text::WordsWithoutTexts(entry.words, *texts, paths) : least;
}

/// What the entry did to the files of these names. Its other files, which may be thousands, are not read.
std::vector<RecordedFile> ChangesIn(const HistoryReader& reader, std::int64_t number,
                                    const std::vector<std::string>& names) {
    std::vector<RecordedFile> changes;
    for (const std::string& name : names)
        if (std::optional<RecordedFile> change = reader.ChangeIn(number, name))
            changes.push_back(std::move(*change));
    return changes;
}

/// The user's name, or his number where he has none.
std::string UserName(uid_t user) {
    const struct passwd* const known = getpwuid(user);
    return known != nullptr ? known->pw_name : std::to_string(user);
}

}  // namespace

std::string PersonOf(const HistoryEntry& entry) {
    if (!entry.loginUser.empty()) return entry.loginUser;
    return entry.sudoUser.empty() ? entry.userName : entry.sudoUser;
}

std::string CommandOf(const HistoryEntry& entry) {
    std::string text;
    for (std::size_t i = 0; i < entry.words.size();) {
        const std::size_t left = CountOfMessageWords(entry, i);
        if (left == 0) text += (text.empty() ? "" : " ") + Text::ShellWordOrHidden(entry.words[i]);
        i += std::max<std::size_t>(left, 1);
    }
    return text;
}

HistoryFile ToldFile(const HistoryReader& reader, const RecordedFile& file) {
    HistoryFile told;
    told.path = reader.PathOf(file.path);
    told.kind = NameOf(file.kind);
    told.result = ResultOf(file.before, file.after);
    told.before = StateOfRecorded(file.before);
    // An entry may have recorded only that the file was going to exist, and nothing else of it.
    told.isEnded = file.IsPlanned();
    if (told.isEnded) told.after = StateOfRecorded(file.after);
    told.isTextKeptBefore = file.before.text.has_value();
    told.isTextKeptAfter = file.after.text.has_value();
    told.isEdited = file.wasEdited;
    for (const RecordedState* state : {&file.before, &file.after}) {
        if (state->exists && reader.AudienceOf(file.path, *state) != Secrets::Audience::Everybody)
            told.isSecret = true;
    }
    const std::string& name = file.after.knowledge.templateName;
    told.templateName = name.empty() ? file.before.knowledge.templateName : name;
    return told;
}

HistoryFile ToldFileOf(const HistoryReader& reader, std::int64_t number, const RecordedFile& file) {
    HistoryFile told = ToldFile(reader, file);
    if (!told.isEnded && reader.IsToRemove(number, file.path)) told.result = FileOutcome::Result::Removed;
    return told;
}

HistoryEntry EntryAsRecorded(const RecordedEntry& entry) {
    HistoryEntry told;
    told.number = entry.number;
    told.begun = entry.begun;
    told.ended = entry.ended;
    told.outcome = NameOf(entry.outcome);
    told.user = entry.user;
    told.userName = UserName(entry.user);
    if (entry.loginUser) told.loginUser = UserName(*entry.loginUser);
    told.sudoUser = entry.sudoUser;
    told.role = entry.role;
    told.words = entry.words;
    told.message = entry.message;
    return told;
}

HistoryEntry ToldEntry(const HistoryReader& reader, const RecordedEntry& entry) {
    HistoryEntry told = EntryAsRecorded(entry);
    told.words = ShownWords(reader, entry);
    return told;
}

std::vector<std::string> PathsOf(const HistoryReader& reader, std::int64_t number) {
    std::vector<std::string> paths;
    for (const RecordedFile& file : reader.FilesOf(number))
        paths.push_back(reader.PathOf(file.path));
    return paths;
}

std::vector<HistoryEntry> ListHistory(Deployment& product, const std::string& file, std::size_t count) {
    const HistoryReader reader(product);
    const std::string name = file.empty() ? "" : reader.NameOf(file);
    const std::vector<std::string> wanted = NamesBeside(name);
    std::vector<HistoryEntry> entries;
    for (const RecordedEntry& entry : file.empty() ? reader.Entries(count) : reader.EntriesOf(name, count)) {
        entries.push_back(ToldEntry(reader, entry));
        for (const RecordedFile& each :
             file.empty() ? reader.FilesOf(entry.number) : ChangesIn(reader, entry.number, wanted))
            entries.back().files.push_back(ToldFileOf(reader, entry.number, each));
    }
    return entries;
}

HistoryEntry ShowEntry(Deployment& product, std::int64_t number) {
    const HistoryReader reader(product);
    HistoryEntry told = ToldEntry(reader, reader.Entry(number));
    for (const RecordedFile& file : reader.FilesOf(number))
        told.files.push_back(ToldFileOf(reader, number, file));
    return told;
}

std::string TextOf(Deployment& product, std::int64_t number, const std::string& file, Side side) {
    const HistoryReader reader(product);
    const std::string name = reader.NameOf(file);
    const RecordedFile change = reader.FileOf(number, name);
    if (side == Side::After && !change.IsPlanned())
        throw Failure(
            {.file = reader.PathOf(name),
             .text = Words("change %s has not written it", std::to_string(number)),
             .remedy = _("wait for its command; one that was killed is ended by the next one that writes")});
    const RecordedState& state = StateOn(side, change);
    const std::string instant =
        Words(side == Side::Before ? ZET_TEXT("before change %s") : ZET_TEXT("after change %s"),
              std::to_string(number));
    if (!state.exists)
        throw Failure({.file = reader.PathOf(name),
                       .text = Words("there was no such file %s", instant),
                       .remedy = _("\"history\" with its name tells when it was written")});
    const std::string trouble = reader.WhyNotKept(state);
    if (!trouble.empty())
        throw Failure({.file = reader.PathOf(name),
                       .text = instant + ", " + trouble,
                       .remedy = _("look for it in a backup of the host")});
    const bool isForNobody = reader.AudienceOf(name, state) == Secrets::Audience::Nobody;
    product.HostSecrets().RequireShown(reader.PathOf(name));
    if (isForNobody && !product.Wanted().showsSecrets)
        throw Failure({.file = reader.PathOf(name),
                       .text = _("its text is not shown: it was committed, and is in no list any more"),
                       .remedy = _("--show-secrets shows it")});
    return reader.Text(state);
}

}  // namespace ZET::Deploy
