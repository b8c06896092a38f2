#include "deploy/targets/ParamRules.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/LineNumbers.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

using Form = Text::ParamLine::Form;
using Selection = std::function<bool(const Text::ParamLine& line)>;

std::vector<Text::ParamLine> Selected(const FoundParam& found, const Selection& isSelected) {
    std::vector<Text::ParamLine> selected;
    const auto& lines = found.look.Lines();
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(selected), isSelected);
    return selected;
}

bool IsSet(const Text::ParamLine& line) {
    return line.form == Form::Set;
}

/// Whether the module takes the line for the parameter when it sets one.
bool IsTaken(const Text::ParamLine& line) {
    return IsSet(line) || line.form == Form::CommentedOut;
}

std::string Numbers(const std::vector<Text::ParamLine>& lines) {
    std::vector<std::size_t> numbers;
    for (const Text::ParamLine& line : lines)
        numbers.push_back(line.number);
    return LineNumbers(numbers);
}

std::string Quoted(const std::string& name) {
    return '"' + name + '"';
}

void RequireOneSection(const FoundParam& found, const Selection& isSelected) {
    std::vector<Text::ParamLine> firsts;  // the first line of each part of the file
    for (const Text::ParamLine& line : Selected(found, isSelected)) {
        if (firsts.empty() || firsts.back().section != line.section) firsts.push_back(line);
    }
    if (firsts.size() < 2) return;
    const bool isBefore = firsts.front().section == 0;
    throw Failure(
        {.file = found.path,
         .text = isBefore ? Words("%s parts have %s, in lines %s", std::to_string(firsts.size()),
                                  Quoted(found.name), Numbers(firsts))
                          : Words("%s sections have %s, in lines %s", std::to_string(firsts.size()),
                                  Quoted(found.name), Numbers(firsts)),
         .remedy = isBefore ? _("--section or --no-section says which") : _("--section says which")});
}

/// `isPart`: a line may take the place of another one in a longer line; `goesOn`: and go on like that.
std::set<std::size_t> PartedLines(const FoundParam& found, const Selection& isSelected, bool isPart,
                                  bool goesOn) {
    std::set<std::size_t> parted;
    for (const Text::ParamLine& line : Selected(found, isSelected)) {
        if (line.isInBlock) continue;
        if (line.isContinuation && !isPart) parted.insert(line.number - 1);
        if (line.goesOn && !(isPart && goesOn)) parted.insert(line.number);
    }
    return parted;
}

/// If the edit would add a line, requires that there are not several sections in which it could end up.
void RequirePlaceForNewLine(const FoundParam& found) {
    const auto& lines = found.look.Lines();
    if (found.look.PartCount() < 2 || std::any_of(lines.begin(), lines.end(), IsTaken)) return;
    throw Failure(
        {.file = found.path,
         .text = Words("no section has %s, and a new line would come to stand in the last one, [%s]",
                       Quoted(found.name), found.look.LastSection()),
         .remedy = _("--section says where, --no-section before all of them")});
}

}  // namespace

void RequireNoBlanks(const FoundParam& found, const std::string& command, const std::string& effect) {
    const auto lines =
        Selected(found, [](const Text::ParamLine& line) { return line.form == Form::SetWithBlanks; });
    if (lines.empty()) return;
    const bool isInOneSection = lines.front().section == lines.back().section;
    throw Failure({.file = found.path,
                   .line = static_cast<int>(lines.front().number),
                   .text = Words("sets %s with blanks before the \"=\", which is no line \"name=value\"",
                                 Quoted(found.name)),
                   .remedy = Words(
                       isInOneSection ? ZET_TEXT("\"%s\" with the PATTERN \"^\\s*%s\\s*=\" %s")
                                      : ZET_TEXT("\"%s\" with --section and the PATTERN \"^\\s*%s\\s*=\" %s"),
                       command, Escaped(found.name), effect)});
}

void RequireNoMarkBefore(const FoundParam& found) {
    const auto lines =
        Selected(found, [](const Text::ParamLine& line) { return line.form == Form::BehindMark; });
    if (!lines.empty()) FailOfByteOrderMark(found.path, lines.front().number);
}

void RequireOneSectionToGet(const FoundParam& found) {
    RequireOneSection(found, IsSet);
}

void RequireOneSectionToRestore(const FoundParam& found) {
    RequireOneSection(found, [](const Text::ParamLine& line) {
        return line.form == Form::Former || (IsTaken(line) && line.isInBlock);
    });
}

void RequireSettable(const FoundParam& found, bool isInSection) {
    RequireNoMarkBefore(found);
    RequireNoBlanks(found, "line set", _("sets it"));
    if (isInSection) return;
    RequireOneSection(found, IsTaken);
    RequirePlaceForNewLine(found);
}

std::set<std::size_t> LinesPartedBySet(const FoundParam& found, bool noMarkers, bool goesOn) {
    return PartedLines(found, IsTaken, noMarkers, goesOn);
}

std::set<std::size_t> LinesPartedByUnset(const FoundParam& found) {
    return PartedLines(found, IsSet, false, false);
}

void TellLinesToSet(Observer& observer, const FoundParam& found, const std::string& oneLine) {
    if (Text::kBlanks.find(found.name.back()) != std::string_view::npos)
        observer.Warning(Words("%s: NAME %s ends with a blank, and no edit without that finds the line",
                               found.path, Quoted(found.name)));
    const auto taken = Selected(found, IsTaken);
    const bool isAllInBlocks =
        std::all_of(taken.begin(), taken.end(), [](const Text::ParamLine& line) { return line.isInBlock; });
    if (taken.size() > 1 && !isAllInBlocks) {
        observer.Warning(Words("%s: lines %s are %s, commented out or not; all of them are set (%s)",
                               found.path, Numbers(taken), Quoted(found.name), oneLine));
    }
    if (taken.size() == 1 && taken.front().form == Form::CommentedOut && !isAllInBlocks) {
        observer.Remark(Words("%s:%s: %s stands here commented out, and the new line takes its place",
                              found.path, std::to_string(taken.front().number), Quoted(found.name)));
    }
    const auto mentioned =
        Selected(found, [](const Text::ParamLine& line) { return line.form == Form::Mentioned; });
    if (!taken.empty() || mentioned.empty()) return;
    observer.Remark(
        Words("%s:%s: %s stands here commented out in another form, which stays; a new line is added",
              found.path, std::to_string(mentioned.front().number), Quoted(found.name)));
}

}  // namespace ZET::Deploy
