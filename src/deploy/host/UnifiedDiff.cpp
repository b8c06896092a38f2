#include "deploy/host/UnifiedDiff.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "deploy/host/Process.h"
#include "deploy/host/Words.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

constexpr char kNoFile[] = "/dev/null";

bool NeedsQuotes(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '"' || c == '\\';
}

/// A file name as `patch` reads it: in quotes if it has unusual bytes, followed by a tab if it has blanks.
std::string Label(const std::string& name) {
    if (std::none_of(name.begin(), name.end(), NeedsQuotes))
        return name.find(' ') == std::string::npos ? name : name + "\t";
    std::string quoted = "\"";
    for (const char c : name) {
        char octal[5] = {c, '\0'};
        if (NeedsQuotes(c)) std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned char>(c));
        quoted += octal;
    }
    return quoted + "\"";
}

std::string SideLabel(const std::string& side, const std::string& file, const std::string& shownPath) {
    if (file.empty()) return kNoFile;
    return Label(side + shownPath.substr(std::min(shownPath.find_first_not_of('/'), shownPath.size())));
}

/// The messages of diff itself, without the diff that it may have begun to print.
std::string ComplaintsIn(const std::string& output) {
    std::string complaints;
    for (const Text::TextLine& line : Text::SplitLines(output)) {
        if (line.text.starts_with("diff: ")) complaints += std::string(line.text) + "\n";
    }
    return complaints;
}

/// Opening anything else could block for ever.
void RequireRegular(const std::string& file, const std::string& shownPath) {
    struct stat status = {};
    if (file.empty() || stat(file.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
    throw NoDiff({.file = shownPath, .text = _("is no regular file"), .remedy = _("move it away")});
}

}  // namespace

std::string DiffLabels(const std::string& oldFile, const std::string& newFile, const std::string& shownPath) {
    return "--- " + SideLabel("a/", oldFile, shownPath) + "\n+++ " + SideLabel("b/", newFile, shownPath) +
           "\n";
}

std::string UnifiedDiff(const std::string& oldFile, const std::string& newFile,
                        const std::string& shownPath) {
    for (const std::string* const file : {&oldFile, &newFile})
        RequireRegular(*file, shownPath);
    // In the C locale: messages of diff would be in the reader's language, and a patch is for everybody.
    const ProcessResult result =
        RunProcess({"diff", "-u", "-a", "--label", SideLabel("a/", oldFile, shownPath), "--label",
                    SideLabel("b/", newFile, shownPath), "--", oldFile.empty() ? kNoFile : oldFile,
                    newFile.empty() ? kNoFile : newFile},
                   {.environment = {"LC_ALL=C"}});
    if (result.status > 1) {
        throw NoDiff(
            {.file = shownPath,
             .text = Words("no diff can be made, as diff ends with status %s", std::to_string(result.status)),
             .remedy = _("run the command again"),
             .output = ComplaintsIn(result.output)});
    }
    return result.output;
}

}  // namespace ZET::Deploy
