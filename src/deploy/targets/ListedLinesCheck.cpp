#include "deploy/targets/ListedLinesCheck.h"

#include <unistd.h>

#include <cstddef>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/PlaceCheck.h"
#include "posix/PathNames.h"
#include "text/Continuation.h"
#include "text/FirstLine.h"
#include "text/ManagedText.h"
#include "text/repair/TextToEdit.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

ListedLinesCheck::ListedLinesCheck(Deployment& product, std::vector<Problem>& problems)
    : m_product(product), m_problems(problems), m_cutShort(FilesOfCutShort(product)) {}

bool ListedLinesCheck::IsSound(const FileWithLines& file) {
    const std::size_t before = m_problems.size();
    CheckText(file);
    CheckPlace(file);
    CheckLines(file);
    return m_problems.size() == before;
}

void ListedLinesCheck::CheckText(const FileWithLines& file) {
    if (const auto damage = Text::FindDamage(file.text))
        m_problems.push_back(Text::ProblemOf(file.path, *damage, m_product.Wanted().program, file.path));
    const Text::FirstLine first = Text::FirstLineOf(file.text);
    if (!file.lines.empty() && (Text::MustComeFirst(first.text) || Text::IsUtf16(first.text)) &&
        first.text.find(ZETNoticeMarker) == std::string_view::npos)
        m_problems.push_back({.file = file.path,
                              .line = static_cast<int>(first.number),
                              .text = _("the programs that read the file need this line as its first, and a "
                                        "notice would come before it"),
                              .remedy = _("take its edits from the lists")});
}

/// Checks the file and its directory, as those of a target are checked.
void ListedLinesCheck::CheckPlace(const FileWithLines& file) {
    const std::string& path = file.path;
    std::vector<Problem> problems = CheckDirectory(DirectoryOf(path), path, _("the edit in the list"));
    Append(problems, CheckFileToWrite(path, ZET_TEXT("the edit"), m_cutShort.contains(path)).problems);
    if (!m_claimed) {
        m_claimed.emplace(m_product);
        m_claimed->AddListed(m_product.Lists().Targets().targets);
    }
    const std::string use = m_claimed->UseBesideTargets(path);
    if (!use.empty())
        problems.push_back(
            {.file = path, .text = Words("is %s", use), .remedy = _("give the edit another file")});
    std::set<std::string> names;
    for (const LineToSet& line : file.lines)
        names.insert(line.edit.path);
    if (geteuid() == 0 && problems.empty()) problems = ObjectionsTo(m_product.HostPaths(), names, path);
    if (m_product.Wanted().onlyLooks) WarnOfRights(m_product.Out(), problems);
    Append(m_problems, std::move(problems));
}

/// Each line of the file must belong to one edit at most, and each edit must find its own line again.
void ListedLinesCheck::CheckLines(const FileWithLines& file) {
    const auto selects = [&](const LineToSet& line, const std::string& text) {
        return Selects(m_product.Core(), line.pattern, text);
    };
    const Text::ManagedText managed(file.text);
    const std::vector<LineInPlace> places = LinesIn(managed);
    std::vector<const LineToSet*> owners(places.size());
    // Pattern by pattern, so that each is compiled once.
    for (const LineToSet& line : file.lines) {
        if (!selects(line, line.line))
            Add(line, _("the line that it sets is not one that it selects"), _("give it another pattern"));
        for (const LineToSet& other : file.lines)
            if (&other != &line && selects(line, other.line))
                Add(line,
                    Words("selects the line that the edit of line %s sets", std::to_string(other.edit.line)),
                    _("give each line to one edit"));
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (!selects(line, places[i].text)) continue;
            CheckPlaceOfLine(file, line, places[i], owners[i]);
            CheckWhole(managed, line, places[i]);
            owners[i] = &line;
        }
    }
}

void ListedLinesCheck::CheckPlaceOfLine(const FileWithLines& file, const LineToSet& line,
                                        const LineInPlace& place, const LineToSet* owner) {
    const std::string where = file.path + ":" + std::to_string(place.number);
    if (owner != nullptr)
        return Add(line,
                   Words("selects %s, as the edit of line %s does", where, std::to_string(owner->edit.line)),
                   _("give each line to one edit"));
    const bool mayBeLists = file.isForgotten || file.Remembers(SelectorOf(line.edit));
    if (place.isInBlock && place.text != line.line && !mayBeLists)
        Add(line, Words("%s stands in a managed block of something else", where),
            _("restore that, or leave the line to it"));
}

/// A line that goes on in the next one is not to be parted from it.
void ListedLinesCheck::CheckWhole(const Text::ManagedText& text, const LineToSet& line,
                                  const LineInPlace& place) {
    if (place.isInBlock || place.text == line.line) return;
    const bool isContinuation = place.number > 1 && Text::GoesOn(text.Line(place.number - 1).text);
    if (!isContinuation && !Text::GoesOn(place.text)) return;
    const std::string number = std::to_string(place.number - (isContinuation ? 1 : 0));
    Add(line,
        Words("would part line %s of %s, which ends with \"\\\", from the next one", number, line.edit.path),
        _("make one line of the two, or disable the edit"));
}

void ListedLinesCheck::Add(const LineToSet& line, const std::string& text, const std::string& remedy) {
    m_problems.push_back({.file = line.edit.file, .line = line.edit.line, .text = text, .remedy = remedy});
}

}  // namespace ZET::Deploy
