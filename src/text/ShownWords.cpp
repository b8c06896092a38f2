#include "text/ShownWords.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_set>

namespace ZET::Text {

namespace {

constexpr std::size_t kMostWordsOfCommand = 2;  // "param set"

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

}  // namespace ZET::Text
