#include "deploy/state/store/Erasure.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <unordered_set>

#include "deploy/state/store/KeptTexts.h"
#include "deploy/state/store/Rows.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kMostWordsOfCommand = 2;  // "param set"

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

/// Whether the word, or a part of it, may come from a text.
using IsOfText = std::function<bool(const std::string& word)>;

bool IsOfCommand(const std::string& word) {
    return word.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string::npos;
}

std::string WithoutTexts(const std::string& word, const IsOfText& isOfText) {
    for (std::size_t sign = word.find('='); sign != std::string::npos; sign = word.find('=', sign + 1))
        if (isOfText(word.substr(sign + 1))) return word.substr(0, sign + 1) + kHiddenWord;
    return !word.starts_with('-') && isOfText(word) ? kHiddenWord : word;
}

/// Options that take a place on the host or in its history, which is nobody's text.
constexpr std::string_view kPlaces[] = {"--root", "-c", "--config", "--module", "--to"};

/// Options whose next word can be anything, and is no option even if it looks like one.
constexpr std::string_view kTakesAnything[] = {"-m", "--message", "--set", "--value"};

template <std::size_t size>
bool IsOneOf(const std::string& word, const std::string_view (&options)[size]) {
    return std::find(std::begin(options), std::end(options), word) != std::end(options);
}

/// "--root=DIR", or DIR behind "--root".
bool IsPlace(const std::vector<std::string>& words, std::size_t i) {
    const auto joined = words[i].find('=');
    if (i > 0 && IsOneOf(words[i - 1], kTakesAnything)) return false;
    if (joined != std::string::npos && IsOneOf(words[i].substr(0, joined), kPlaces)) return true;
    return i > 0 && IsOneOf(words[i - 1], kPlaces) && (i == 1 || !IsOneOf(words[i - 2], kTakesAnything));
}

/// "undo 3": the number of an entry.
bool IsEntryToUndo(const std::vector<std::string>& words, std::size_t i, std::size_t ofCommand) {
    return ofCommand == 1 && i > 0 && words[i - 1] == "undo" &&
           words[i].find_first_not_of("0123456789") == std::string::npos;
}

/// What comes after each slash, the longest first.
std::vector<std::string_view> EndsOf(std::string_view path) {
    std::vector<std::string_view> ends;
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', slash + 1))
        ends.push_back(path.substr(slash + 1));
    return ends;
}

/// Tells which words name one of the files, without comparing each of 10,000 words with each of 10,000 paths.
class FileNames {
  public:
    explicit FileNames(const std::vector<std::string>& paths) {
        for (const std::string& path : paths) {
            m_paths.insert(path);
            for (const std::string_view end : EndsOf(path))
                m_ends.insert(end);
        }
    }

    /// By its path, the end of its path, or its path below a root.
    bool Has(std::string_view word) const {
        if (word.empty() || m_paths.contains(word) || m_ends.contains(word)) return !word.empty();
        const std::vector<std::string_view> ends = EndsOf(word);
        return std::any_of(ends.begin(), ends.end(), [&](std::string_view end) {
            return m_paths.contains(word.substr(word.size() - end.size() - 1));
        });
    }

  private:
    std::unordered_set<std::string_view> m_paths;
    std::unordered_set<std::string_view> m_ends;
};

std::vector<std::string> WordsWithout(const IsOfText& isOfText, const std::vector<std::string>& words,
                                      const std::vector<std::string>& paths) {
    const FileNames files(paths);
    const auto options =
        static_cast<std::size_t>(std::find(words.begin(), words.end(), "--") - words.begin());
    std::vector<std::string> shown = words;
    std::size_t ofCommand = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        const bool isPlace = i <= options && IsPlace(words, i);
        if (isPlace || IsEntryToUndo(words, i, ofCommand) || files.Has(word)) continue;
        const bool isCommand = ofCommand < kMostWordsOfCommand && !word.starts_with('-') && IsOfCommand(word);
        if (isCommand)
            ++ofCommand;
        else
            shown[i] = WithoutTexts(word, isOfText);
    }
    return shown;
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
        std::vector<std::string> words = WordsWithoutAnyText(entry->words, PathsOf(database, number));
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

std::vector<std::string> WordsWithoutTexts(const std::vector<std::string>& words,
                                           const std::vector<std::string>& texts,
                                           const std::vector<std::string>& paths) {
    // A text that cannot be read hides no words, and goes all the same.
    const auto isHeld = [&](const std::string& word) {
        return !word.empty() && std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
            return text.find(word) != std::string::npos;
        });
    };
    return WordsWithout(isHeld, words, paths);
}

std::vector<std::string> WordsWithoutAnyText(const std::vector<std::string>& words,
                                             const std::vector<std::string>& paths) {
    return WordsWithout([](const std::string& word) { return !word.empty(); }, words, paths);
}

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
