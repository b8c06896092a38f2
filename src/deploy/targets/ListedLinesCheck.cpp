#include "deploy/targets/ListedLinesCheck.h"

#include <unistd.h>

#include <cstddef>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/targets/LineProblems.h"
#include "deploy/targets/PlaceCheck.h"
#include "posix/PathNames.h"
#include "text/FirstLine.h"
#include "text/repair/TextToEdit.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

ListedLinesCheck::ListedLinesCheck(Deployment& product, std::vector<Problem>& problems)
    : m_product(product), m_problems(problems), m_cutShort(FilesOfCutShort(product)) {}

bool ListedLinesCheck::IsSound(const FileWithLines& file) {
    const std::size_t before = m_problems.size();
    CheckText(file);
    CheckPlace(file);
    Append(m_problems, ProblemsOfLines(m_product, file));
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

}  // namespace ZET::Deploy
