#include "deploy/state/EntryToOpen.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "deploy/state/LoginUser.h"
#include "text/ShownWords.h"

namespace ZET::Deploy {

namespace {

std::vector<std::string> ShownWords(const Options& options, bool isPrivate) {
    std::vector<std::string> words;
    for (const CommandWord& word : options.words)
        words.push_back(word.isText && isPrivate ? word.text.substr(0, word.shown) + Text::kHiddenWord
                                                 : word.text);
    if (words.empty()) words.push_back(options.command);
    return words;
}

}  // namespace

bool HasTexts(const Options& options) {
    return std::any_of(options.words.begin(), options.words.end(),
                       [](const CommandWord& word) { return word.isText; });
}

RecordedEntry EntryToOpen(const Host& host, bool isPrivate) {
    RecordedEntry entry;
    entry.user = getuid();
    entry.loginUser = LoginUser();
    if (const char* const user = std::getenv("SUDO_USER")) entry.sudoUser = user;
    entry.role = host.Role();
    entry.words = ShownWords(host.Wanted(), isPrivate);
    entry.message = host.Wanted().message;
    return entry;
}

}  // namespace ZET::Deploy
