#include "deploy/targets/ListedLines.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/Overrides.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/EditedTargets.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/ParamRules.h"
#include "text/Lines.h"
#include "text/Placeholders.h"
#include "text/ShellWord.h"
#include "text/TemplateCheck.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

Problem ProblemAt(const ListedEdit& edit, const std::string& text, const std::string& remedy) {
    return {.file = edit.file, .line = edit.line, .text = text, .remedy = remedy};
}

const std::string& SourceOf(const ListedEdit& edit) {
    return edit.param.empty() ? edit.text : edit.value;
}

/// The lines as the module sees them when it replaces placeholders.
std::string GuardedLines(const std::vector<const ListedEdit*>& edits) {
    std::string text;
    for (const ListedEdit* const edit : edits)
        text.append(Text::kLineGuard).append(SourceOf(*edit)).append("\n");
    return text;
}

/// What "param set" requires. A list has no way to name a section.
void RequireSettableLine(const FileWithLines& file, const std::string& param) {
    const Text::ParamLook look = LookOf(file, param);
    const FoundParam found{file.path, param, look};
    RequireNoMarkBefore(found);
    try {
        RequireSettable(found, false);
    } catch (const Failure& failure) {
        Problem problem = failure.Facts();
        problem.remedy = _("choose the line with pattern and line, or make a template for the file");
        throw Failure(problem);
    }
}

/// Whether each line that is selected stands in a block, and is the one to set.
bool IsSetAlready(IZETCore& core, const FileWithLines& file, const LineToSet& line) {
    return StateOfLine(file, line, LinesIn(Text::ManagedText(file.text)), core) == kInSync;
}

Problem ProblemOfEdit(const ListedEdit& edit, const Failure& failure) {
    Problem problem = ProblemOf(edit.file, failure);
    problem.line = edit.line;
    return problem;
}

class Finder {
  public:
    Finder(Deployment& product, const KnownFiles& known, const Staging& staging)
        : m_product(product), m_known(known), m_staging(staging) {}

    ListedLines Find() {
        std::vector<const ListedEdit*> edits;
        for (const ListedEdit& edit : m_product.Lists().Targets().edits)
            if (edit.IsInForceFor(m_product.Role()) && !edit.path.empty()) edits.push_back(&edit);
        CheckSources(edits);
        if (m_found.problems.empty()) {
            const std::vector<std::string> lines = Expanded(edits);
            for (std::size_t i = 0; i < lines.size(); ++i)
                Add(*edits[i], lines[i]);
        } else {
            for (const ListedEdit* const edit : edits)
                m_found.unset.push_back({edit, ProblemOfSource(*edit)});
        }
        for (const std::string& path : m_known.EditedPaths())
            AddRemembered(path);
        return std::move(m_found);
    }

  private:
    /// Finds what would keep the module from ever returning, or make several lines of one.
    void CheckSources(const std::vector<const ListedEdit*>& edits) {
        const std::string text = GuardedLines(edits);
        const auto source = [&](const auto& take) {
            for (const Text::TextLine& line : Text::SplitLines(text))
                take(line.text);
        };
        for (Problem& problem : Text::CheckTemplate("", source, m_product.TemplateValues(), nullptr, false)) {
            const ListedEdit& edit = *edits[static_cast<std::size_t>(problem.line) - 1];
            Problem told = ProblemAt(edit, problem.text, problem.remedy);
            told.quoted = problem.quoted;
            HideQuote(told);
            m_found.problems.push_back(std::move(told));
        }
        for (const ListedEdit* const edit : edits)
            CheckLineFeeds(*edit);
    }

    /// As all lines are expanded at once, a problem of one keeps all from being told.
    const Problem& ProblemOfSource(const ListedEdit& edit) const {
        const auto own = std::find_if(
            m_found.problems.begin(), m_found.problems.end(),
            [&](const Problem& problem) { return problem.file == edit.file && problem.line == edit.line; });
        return own == m_found.problems.end() ? m_found.problems.front() : *own;
    }

    void CheckLineFeeds(const ListedEdit& edit) {
        for (const std::string& placeholder : Text::PlaceholdersOfValue(SourceOf(edit))) {
            const auto value = m_product.TemplateValues().find(placeholder);
            if (value != m_product.TemplateValues().end() && value->second.find('\n') != std::string::npos)
                m_found.problems.push_back(ProblemAt(edit, Words("%s has several lines", placeholder),
                                                     _("an edit sets one line; make a template for more")));
        }
    }

    void HideQuote(Problem& problem) {
        Secrets& secrets = m_product.HostSecrets();
        const std::string main = m_product.Param("ZET_CFG");
        if (secrets.Hides(main)) problem.HideQuoted(secrets.Excuse(main));
    }

    /// The module replaces the placeholders, as it does in a template.
    std::vector<std::string> Expanded(const std::vector<const ListedEdit*>& edits) {
        if (edits.empty()) return {};
        const std::string staged = m_staging.PathOf("lines-of-lists");
        WriteStagedFile(staged, GuardedLines(edits), 0600);
        const ParamOverride noSync(m_product.Core(), "ZET_SYNC", "no");
        const QuietLog quiet(ZETLogError);
        StringMap values = m_product.TemplateValues();
        const auto file = m_product.Config().OpenConfigFile(staged, NameOf(m_product.Role()), true);
        if (!file)
            throw Failure(
                {.file = staged, .text = _("cannot be read any more"), .remedy = _("run the command again")});
        RemedyErrors("", [&] {
            file->ApplyTemplates(values);
            file->Save(true);
        });
        std::vector<std::string> lines;
        const std::string text = ReadFileBytes(staged);
        for (const Text::TextLine& line : Text::SplitLines(text))
            lines.emplace_back(line.text.substr(std::min(line.text.size(), Text::kLineGuard.size())));
        if (lines.size() == edits.size()) return lines;
        throw Failure({.file = m_product.Lists().Targets().file,
                       .text = _("a value of an edit has several lines"),
                       .remedy = _("give each edit one line")});
    }

    void Add(const ListedEdit& edit, const std::string& line) {
        try {
            FileWithLines* const file = FileOf(edit);
            if (file != nullptr) file->lines.push_back(Made(edit, line, *file));
        } catch (const Failure& failure) {
            Refuse(edit, ProblemOfEdit(edit, failure));
        } catch (const UsageError& error) {
            Refuse(edit, {.file = edit.file, .line = edit.line, .text = error.what()});
        }
    }

    void Refuse(const ListedEdit& edit, Problem problem) {
        m_found.problems.push_back(problem);
        m_found.unset.push_back({&edit, std::move(problem)});
    }

    LineToSet Made(const ListedEdit& edit, const std::string& line, const FileWithLines& file) {
        IZETCore& core = m_product.Core();
        LineToSet made{edit, "", line};
        if (edit.param.empty()) {
            RequirePattern(core, edit.pattern);
            // The module adds markers line by line, and the pattern must not select these.
            const std::string markers =
                std::string(ZETFormerLinePrefix) + "\n" + ZETBeginMarker + "\n" + ZETEndMarker + "\n";
            made.pattern = PatternForSet(core, file.path, file.text + "\n" + markers, edit.pattern);
        } else {
            RequireParamName(edit.param);
            RequireLiteralName(core, file.path, file.text, ZETEditOpening, edit.param);
            made.pattern = ZETEditOpening + edit.param + "=";
            made.line = edit.param + "=" + line;
        }
        RequireNoMarker(made.line);
        made.line = Text::WithLineEnd(made.line, file.ends);
        if (!edit.param.empty()) JudgeParam(made, file);
        return made;
    }

    /// A commit that has nothing to write does no harm.
    void JudgeParam(LineToSet& line, const FileWithLines& file) {
        try {
            RequireSettableLine(file, line.edit.param);
        } catch (const Failure& failure) {
            if (!IsSetAlready(m_product.Core(), file, line)) throw;
            line.doubt = ProblemOfEdit(line.edit, failure).Describe();
        }
    }

    /// Null if the file is not there, and need not be.
    FileWithLines* FileOf(const ListedEdit& edit) {
        const std::string path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(edit.path));
        m_asked.insert(path);
        const auto known = m_byPath.find(path);
        FileWithLines& file = known != m_byPath.end() ? m_found.files[known->second] : Look(path);
        if (file.named.empty()) file.named = edit.path;
        if (!file.isThere && edit.isOptional) return nullptr;
        if (!file.isThere)
            throw Failure(
                {.file = edit.path, .text = _("is missing"), .remedy = _("make it, or say optional = true")});
        if (const Target* const target = TargetOfAnyAt(m_product, path))
            throw Failure(ProblemOfTarget(edit, *target));
        if (!WasTarget(path) || file.original) return &file;
        file.isThere = !edit.isOptional || !IsFileExist(path + ZETAbsenceSuffix);
        if (!file.isThere) return nullptr;  // the file goes with its template
        throw Failure({.file = edit.path,
                       .text = _("was made from a template, and has no reserve in which to set the line"),
                       .remedy = WayWithoutReserve(edit, path)});
    }

    std::string WayWithoutReserve(const ListedEdit& edit, const std::string& path) const {
        if (IsFileExist(path + ZETAbsenceSuffix) || !IsKnownAsWritten(m_product, path))
            return Words("\"rollback-config %s\" first", Text::ShellWord(edit.path));
        return Words(
            "put back %s, or give up what was there before the template: \"rollback-config --force %s\"",
            path + ZETReserveSuffix, Text::ShellWord(edit.path));
    }

    /// Whether a commit has made the file from a template.
    bool WasTarget(const std::string& path) const {
        const KnownFile* const known = m_known.Find(path);
        return known != nullptr && known->kind == FileKind::Target && known->state.knowledge.IsCommitted();
    }

    FileWithLines& Look(const std::string& path) {
        FileWithLines file;
        file.path = path;
        file.version = VersionOf(path);
        file.before = StateOf(path);
        if (WasTarget(path) && IsFileExist(path + ZETReserveSuffix))
            file.original = Capture(path + ZETReserveSuffix, UINT64_MAX);
        file.isThere = file.before.exists || file.original;
        if (file.isThere) file.text = file.original ? file.original->text : ReadFileBytes(path);
        file.ends = Text::LineEndsOf(file.text);
        const KnownFile* const known = m_known.Find(path);
        file.isForgotten =
            known == nullptr && IsFileExist(path + ZETReserveSuffix) && IsUnseen(m_product, path);
        file.isUntold = m_known.IsUnusable() && IsFileExist(m_product.State().Status(m_product.Role()));
        file.remembered = RememberedLinesOf(path);
        m_byPath.emplace(path, m_found.files.size());
        m_found.files.push_back(std::move(file));
        return m_found.files.back();
    }

    /// Adds a file in which lines were set, and no list asks for any. A target gets another text anyway.
    void AddRemembered(const std::string& path) {
        if (m_asked.contains(path)) return;
        FileWithLines unread;
        try {
            unread.remembered = RememberedLinesOf(path);
            if (!unread.remembered.empty() && TargetAt(m_product, path) == nullptr) Look(path);
        } catch (const Failure& failure) {
            m_found.problems.push_back(ProblemOf(path, failure));
            unread.path = path;
            unread.trouble = m_found.problems.back().Describe();
            m_found.files.push_back(std::move(unread));
        }
    }

    /// What commits have set in the file.
    std::vector<RememberedLine> RememberedLinesOf(const std::string& path) {
        const KnownFile* const known = m_known.Find(path);
        Store* const store = m_product.HostHistory().ToLookIfUsable();
        if (known == nullptr || store == nullptr) return {};
        return LinesSetIn(*store, known->kind, known->state.knowledge);
    }

    Deployment& m_product;
    const KnownFiles& m_known;
    const Staging& m_staging;
    std::map<std::string, std::size_t> m_byPath;
    std::set<std::string> m_asked;  ///< the files that the lists name, also those that are refused
    ListedLines m_found;
};

}  // namespace

std::string SelectorOf(const ListedEdit& edit) {
    return edit.param.empty() ? "pattern " + edit.pattern : "param " + edit.param;
}

bool FileWithLines::Remembers(const std::string& selector) const {
    return std::any_of(remembered.begin(), remembered.end(),
                       [&](const RememberedLine& line) { return line.selector == selector; });
}

bool FileWithLines::IsCommittedBy(Role role, const std::string& selector) const {
    return std::any_of(remembered.begin(), remembered.end(), [&](const RememberedLine& line) {
        return line.role == role && line.selector == selector;
    });
}

bool FileWithLines::HasSet(const std::string& selector, const std::string& line) const {
    return std::any_of(remembered.begin(), remembered.end(), [&](const RememberedLine& each) {
        return each.selector == selector && each.line == line;
    });
}

Text::ParamLook LookOf(const FileWithLines& file, const std::string& param) {
    Text::ParamLook look(param);
    look.Take(file.text, 0);
    return look;
}

ListedLines FindListedLines(Deployment& product, const KnownFiles& known, const Staging& staging) {
    return Finder(product, known, staging).Find();
}

}  // namespace ZET::Deploy
