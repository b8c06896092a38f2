#include "deploy/state/store/Erasure.h"

#include <set>

#include "deploy/state/store/KeptTexts.h"
#include "deploy/state/store/Rows.h"
#include "text/ShownWords.h"

namespace ZET::Deploy {

namespace {

std::set<std::int64_t> StatesOf(Database& database, const std::vector<std::string>& paths) {
    std::set<std::int64_t> states;
    for (const std::string& path : paths) {
        const std::vector<std::int64_t> ofPath =
            Numbers(database,
                    "SELECT before FROM files WHERE path = ?1 UNION ALL"
                    " SELECT after FROM files WHERE path = ?1 UNION ALL"
                    " SELECT left_before FROM files WHERE path = ?1 AND left_before IS NOT NULL"
                    " UNION ALL"
                    " SELECT state FROM known WHERE path = ?1",
                    {path});
        states.insert(ofPath.begin(), ofPath.end());
    }
    return states;
}

std::set<std::int64_t> EntriesOf(Database& database, const std::vector<std::string>& paths) {
    std::set<std::int64_t> entries;
    for (const std::string& path : paths)
        for (const std::int64_t entry : Numbers(database, "SELECT entry FROM files WHERE path = ?", {path}))
            entries.insert(entry);
    return entries;
}

std::set<std::int64_t> TextsOf(const RecordedState& state) {
    std::set<std::int64_t> texts;
    for (const std::optional<TextNumber>& text : {state.text, state.knowledge.base})
        if (text) texts.insert(text->value);
    return texts;
}

/// Whether the text is empty, and so tells nothing: many files begin or end empty.
bool IsEmpty(Database& database, std::int64_t text) {
    return !Numbers(database, "SELECT id FROM texts WHERE id = ? AND size = 0", {text}).empty();
}

/// Finds all of them in one pass over the files, of which there may be many.
std::set<std::string> HoldersOf(Database& database, const std::set<std::int64_t>& texts) {
    std::set<std::int64_t> states;
    for (const std::int64_t text : texts)
        for (const std::int64_t id :
             Numbers(database, "SELECT id FROM states WHERE text = ?1 OR base = ?1", {text}))
            states.insert(id);
    std::set<std::string> paths;
    if (states.empty()) return paths;
    Database::Rows rows(database,
                        "SELECT path, before, after, left_before FROM files"
                        " UNION ALL SELECT path, state, NULL, NULL FROM known");
    while (rows.Next()) {
        for (const int column : {1, 2, 3}) {
            const std::optional<std::int64_t> state = rows.OptionalNumber(column);
            if (state && states.contains(*state)) paths.insert(rows.Text(0));
        }
    }
    return paths;
}

std::vector<std::string> PathsOf(Database& database, std::int64_t entry) {
    std::vector<std::string> paths;
    Database::Rows rows(database, "SELECT path FROM files WHERE entry = ?", {entry});
    while (rows.Next())
        paths.push_back(rows.Text(0));
    return paths;
}

/// Whether the word gives the user's own message, which is no text of a file.
bool GivesMessage(const std::string& word, const std::string& message) {
    return word == message || word == "-m" + message || word == "--message=" + message;
}

/// A pattern or a value may hold a part of a text, or be a part of one, so none is kept.
void HideWords(Database& database, const std::set<std::int64_t>& numbers) {
    for (const std::int64_t number : numbers) {
        std::optional<RecordedEntry> entry = EntryAt(database, number);
        if (!entry) continue;
        std::vector<std::string> words = Text::WordsWithoutAnyText(entry->words, PathsOf(database, number));
        for (std::size_t i = 0; i < words.size(); ++i)
            if (GivesMessage(entry->words[i], entry->message)) words[i] = entry->words[i];
        if (words == entry->words) continue;
        entry->words = std::move(words);
        ReplaceEntry(database, *entry);
    }
}

void TakeOut(Database& database, std::int64_t id, RecordedState state) {
    state.text.reset();
    if (state.knowledge.base) state.knowledge.isBaseErased = true;
    state.knowledge.base.reset();
    ReplaceState(database, id, state);
}

/// Adds what they are made from: if nobody has that any more, it was a text of the same file, or of one that
/// had the same text.
std::set<std::int64_t> WithBases(Database& database, const std::set<std::int64_t>& texts) {
    std::set<std::int64_t> all = texts;
    std::vector<std::int64_t> rest(texts.begin(), texts.end());
    while (!rest.empty()) {
        const std::int64_t text = rest.back();
        rest.pop_back();
        // If one was damaged and is kept anew, what it was made from may itself be made from another.
        for (const std::int64_t base :
             Numbers(database, "SELECT made_from FROM texts WHERE id = ? AND made_from IS NOT NULL", {text}))
            if (all.insert(base).second) rest.push_back(base);
    }
    return all;
}

bool IsNobodys(Database& database, std::int64_t text) {
    return Numbers(database, "SELECT id FROM states WHERE text = ?1 OR base = ?1 LIMIT 1", {text}).empty();
}

/// What other files have of the texts stays, and can then be read without those that go.
void DeleteUnheld(Database& database, const std::set<std::int64_t>& texts) {
    const std::set<std::int64_t> all = WithBases(database, texts);
    // Texts come after those that they are made from, so going backwards, what goes itself is not made whole.
    for (auto text = all.rbegin(); text != all.rend(); ++text) {
        if (!IsNobodys(database, *text)) continue;
        MakeWholeWithout(database, {*text});
        database.Run("DELETE FROM texts WHERE id = ?", {*text});
    }
}

}  // namespace

std::size_t CountTextsOf(Database& database, const std::vector<std::string>& paths) {
    std::set<std::int64_t> texts;
    for (const std::int64_t id : StatesOf(database, paths))
        texts.merge(TextsOf(StateAt(database, id)));
    return texts.size();
}

Erasure EraseTexts(Database& database, const std::vector<std::string>& paths) {
    std::set<std::int64_t> texts;
    for (const std::int64_t id : StatesOf(database, paths)) {
        const RecordedState state = StateAt(database, id);
        texts.merge(TextsOf(state));
        TakeOut(database, id, state);
    }
    HideWords(database, EntriesOf(database, paths));
    std::set<std::int64_t> telling = texts;
    std::erase_if(telling, [&](std::int64_t text) { return IsEmpty(database, text); });
    const std::set<std::string> holders = HoldersOf(database, telling);
    DeleteUnheld(database, texts);
    return {texts.size(), {holders.begin(), holders.end()}};
}

}  // namespace ZET::Deploy
