#include <string>

#include "deploy/host/Words.h"
#include "deploy/targets/TakeBack.h"
#include "text/ShellWord.h"

// Which files stay though they should go back, and what is reported of them.
namespace ZET::Deploy {

using Result = FileOutcome::Result;

/// The error of a rollback says why and what to do, so that the remark need not.
void TakeBack::Keep(TakeBackStep& step, const std::string& words, const char* remark) const {
    step.Tell(Result::Kept, m_ways.isOfCommit ? words : _(remark));
    FailToTakeBack(step, step.file.path + ": " + words);
}

/// A commit leaves the file, and is no failure.
void TakeBack::FailToTakeBack(TakeBackStep& step, const std::string& words) const {
    step.isKept = true;
    if (!m_ways.isOfCommit) m_product.Out().Error(words);
}

/// The words of the command or option that puts the file back all the same.
std::string TakeBack::Force(const WrittenFile& file) const {
    return m_ways.isOfCommit ? Words("\"rollback-config --force %s\"", Text::ShellWord(file.named))
                             : "--force";
}

void TakeBack::KeepEdited(TakeBackStep& step) const {
    const bool isUntold = m_product.HostHistory().IsDenied();
    const char* const remark = isUntold ? _("may be edited, stays as it is") : _("edited, stays as it is");
    const char* words =
        ZET_TEXT("%s: was edited since it was committed and stays (%s puts back what was there before)");
    if (m_known.IsAsLeft(step.file.path))
        words =
            ZET_TEXT("%s: holds edits that a commit merged, and stays (%s puts back what was there before)");
    if (isUntold)
        words = ZET_TEXT(
            "%s: may have been edited since it was committed, and stays (%s puts back what was there "
            "before)");
    KeepEdited(step, Words(words, step.file.path, Force(step.file)), remark);
}

void TakeBack::KeepEdited(TakeBackStep& step, const std::string& told, const std::string& remark) const {
    step.Tell(Result::Kept, remark);
    if (m_ways.keepsEdits) return;
    if (m_ways.isOfCommit) m_product.Out().Warning(told);
    FailToTakeBack(step, told);
}

bool TakeBack::MayBeOthers(const WrittenFile& file) const {
    return m_known.IsUnusable() && file.isOfBoth && m_product.HasCommitted(m_otherRole);
}

/// Without the history, nobody can tell whether the other role has committed the file. Only a rollback comes
/// here, since a commit takes back what the history knows.
void TakeBack::KeepOthers(TakeBackStep& step) const {
    Keep(step, Words("may have been committed by the role %s, too, and stays (%s puts it back)",
                     RoleInWords(m_otherRole), Force(step.file)));
}

}  // namespace ZET::Deploy
