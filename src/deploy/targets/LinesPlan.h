#ifndef ZET_LINES_PLAN_H
#define ZET_LINES_PLAN_H

#include <string>
#include <vector>

#include "deploy/state/Recording.h"
#include "deploy/targets/ListedLines.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/OnEdit.h"

namespace ZET::Deploy {

/// What a commit does to a file in which the lists ask for lines.
struct PlannedLines {
    FileWithLines file;
    std::string staged;                ///< the file as it would be; empty: it stays as it is
    bool isOriginalLost = false;       ///< what is there is the product's own work, which gets no reserve
    bool isTakenBack = false;          ///< former lines come back, so that the text is not the module's alone
    bool isEdited = false;             ///< somebody changed a line that a commit had set; it is set again
    bool isMerged = false;             ///< somebody changed such a line, and it stays as it is
    bool dropsMerge = false;           ///< the edits in the target that would be lost were merged by a commit
    int editedLine = 0;                ///< the first one that somebody changed; 0: it cannot be named
    std::vector<Problem> conflicts{};  ///< somebody changed a line, and the lists now ask for another one

    bool IsChange() const { return !staged.empty(); }

    /// The file, with the first line that was changed if one can be named.
    std::string Place() const;

    /// Describes the others' work that is not going to stay.
    std::string DescribeOthersWork() const;
};

/// The edits of the lists that are in force for the host's role, and those that are not any more.
class LinesPlan {
  public:
    /// Looks at every file, and makes in `staging` what would become of it. A merge leaves a line that
    /// somebody changed if the lists ask for the same line as before.
    LinesPlan(Deployment& product, const KnownFiles& known, const Staging& staging,
              OnEdit onEdit = OnEdit::Overwrite);

    const std::vector<Problem>& Problems() const { return m_problems; }
    const std::vector<PlannedLines>& Files() const { return m_files; }

    /// Files in which the product has nothing but lines that are not in force any more.
    const std::vector<std::string>& Emptied() const { return m_emptied; }

    ExpectedFile Expected(const PlannedLines& planned) const;

    /// Whether the role has not committed some of the lines yet. A history that cannot be read does not tell.
    bool IsNewToRole() const;

    /// Whether it is on record that the role has set the lines.
    bool IsKnown(const PlannedLines& planned) const;

    /// For a file that holds the lines already.
    ExpectedFile ExpectedUnchanged(const PlannedLines& planned) const;
    FileOutcome OutcomeOf(const PlannedLines& planned) const;

    /// Reports what somebody may not expect of the lines that are set.
    void TellLines(const PlannedLines& planned) const;

    /// Throws a `Failure` if the file was written since the plan was made, or if it comes out differently.
    void Write(const PlannedLines& planned) const;

  private:
    void Plan(FileWithLines file, const Staging& staging);
    void JudgeEdited(PlannedLines& planned) const;
    void JudgeEditedTarget(PlannedLines& planned) const;
    std::string WithoutFormerLines(const FileWithLines& file);
    std::string WithLostLines(const FileWithLines& file, const std::string& text) const;
    std::string TextWith(const FileWithLines& file, const std::string& text) const;
    void SetStaged(const std::string& staged, const FileWithLines& file) const;
    void Set(const std::string& name, const FileWithLines& file) const;
    std::vector<RememberedLine> ToRemember(const FileWithLines& file) const;

    Deployment& m_product;
    const KnownFiles& m_known;
    const OnEdit m_onEdit;
    std::vector<Problem> m_problems;
    std::vector<PlannedLines> m_files;
    std::vector<std::string> m_emptied;
};

/// What keeps the lists' edits from being made.
std::vector<Problem> ProblemsOfEdits(Deployment& product);

}  // namespace ZET::Deploy

#endif
