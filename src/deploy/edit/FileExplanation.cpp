#include "deploy/edit/FileExplanation.h"

#include "deploy/edit/Edits.h"
#include "deploy/host/Companions.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "text/Placeholders.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

bool FileExplanation::HasUntracedLines() const {
    bool has = false;
    lines->ForEach([&](const Text::ExplainedLines& each) {
        has = has || each.kind == Text::ExplainedLines::Kind::Untraced ||
              each.kind == Text::ExplainedLines::Kind::Differing;
    });
    return has;
}

/// The words were recorded while others could read the file, and are hidden now that they cannot.
static void HideWords(std::vector<std::optional<LineAge>>& ages) {
    for (std::optional<LineAge>& age : ages)
        if (age && age->entry) age->entry->words = {"***"};
}

/// Finding the values takes a look at all that gives some.
static StringMap ValuesFor(Deployment& product, const std::string& templateText) {
    const bool hasPlaceholders = templateText.find(Text::kPlaceholderBegin) != std::string::npos;
    return hasPlaceholders ? product.TemplateValues() : StringMap();
}

/// Whether the value of several lines that could not be read may stand in what the template makes.
static bool MayUse(Deployment& product, const std::string& templateText, const Problem& unread) {
    for (const auto& [placeholder, file] : product.Values().ValueFiles())
        if (file == unread.file) return templateText.find(placeholder) != std::string::npos;
    return true;
}

/// Where nobody knows how many lines a value has, none of them can be traced, nor what follows.
static void WarnOfUnread(Deployment& product, const FileExplanation& explanation) {
    const std::string& text = *explanation.templateText;
    if (text.find(Text::kPlaceholderBegin) == std::string::npos) return;
    const std::vector<Problem>& unread = product.Values().UnreadSources().texts;
    if (unread.empty() || !explanation.HasUntracedLines()) return;
    for (const Problem& problem : unread)
        if (MayUse(product, text, problem))
            product.Out().Warning(
                Words("%s; so lines that are reported as changed may come from a value that is not known",
                      problem.Describe()));
}

FileExplanation ExplainFile(Deployment& product, const std::string& file) {
    FileExplanation result;
    result.path = FileToRead(product, file);
    result.text = std::make_unique<const std::string>(ReadFileBytes(result.path));
    result.regions = std::make_unique<const Text::ManagedText>(*result.text);
    const Text::ManagedText& text = *result.regions;
    result.lineCount = text.LineCount();
    result.origin = FindOrigin(product, file, text, WrittenNoticeTexts(product.Core()));
    result.isHidden = product.HostSecrets().Hides(result.path);
    result.reserve = ReserveOf(result.path);
    result.hadNoFile = result.reserve.empty() && IsFileExist(result.path + ZETAbsenceSuffix);
    const std::string& source = result.origin.templateFile;
    result.templateText = std::make_unique<const std::string>(source.empty() ? "" : ReadFileBytes(source));
    result.lines = std::make_unique<const Text::TextExplanation>(
        text, result.origin.isMade, *result.templateText, ValuesFor(product, *result.templateText));
    WarnOfUnread(product, result);
    result.ages = AgesOfLines(product, file, *result.text);
    if (result.isHidden) HideWords(result.ages);
    return result;
}

}  // namespace ZET::Deploy
