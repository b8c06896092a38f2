#include "deploy/targets/LineProblems.h"

#include <string>

#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/LinesInPlace.h"
#include "text/Continuation.h"
#include "text/ManagedText.h"

namespace ZET::Deploy {

namespace {

/// The line that an edit asks for, with its placeholders.
std::string SourceLineOf(const ListedEdit& edit) {
    return edit.param.empty() ? edit.text : edit.param + "=" + edit.value;
}

class LineJudge {
  public:
    LineJudge(Deployment& product, const FileWithLines& file)
        : m_product(product), m_core(product.Core()), m_file(file) {}

    std::vector<Problem> Run() {
        const Text::ManagedText managed(m_file.text);
        const std::vector<LineInPlace> places = LinesIn(managed);
        std::vector<const LineToSet*> owners(places.size());
        // Pattern by pattern, so that each is compiled once.
        for (const LineToSet& line : m_file.lines) {
            JudgePattern(line);
            JudgeOtherRole(line);
            for (const LineToSet& other : m_file.lines)
                if (&other != &line && IsSelected(line, other.line))
                    Add(line,
                        Words("selects the line that the edit of line %s sets",
                              std::to_string(other.edit.line)),
                        _("give each line to one edit"));
            for (std::size_t i = 0; i < places.size(); ++i) {
                if (!IsSelected(line, places[i].text)) continue;
                JudgePlace(line, places[i], owners[i]);
                JudgeWhole(managed, line, places[i]);
                owners[i] = &line;
            }
        }
        return std::move(m_problems);
    }

  private:
    bool IsSelected(const LineToSet& line, const std::string& text) {
        return Selects(m_core, line.pattern, text);
    }

    std::string PlaceOf(std::size_t number) const { return m_file.path + ":" + std::to_string(number); }

    /// The pattern must select the line that it sets, and no line without its end.
    void JudgePattern(const LineToSet& line) {
        if (SelectsWithoutReturn(m_core, line.pattern, line.line))
            return Add(line,
                       _("selects the line that it sets only without the carriage return that this gets"),
                       _(kPatternForReturn));
        if (!IsSelected(line, line.line))
            return Add(line, _("the line that it sets is not one that it selects"),
                       _("give it another pattern"));
        const std::size_t number = FirstSelectedWithoutReturn(m_core, line.pattern, m_file.text);
        if (number != 0)
            Add(line, Words("selects %s only without the carriage return at its end", PlaceOf(number)),
                _(kPatternForReturn));
    }

    /// Either role would set its own line in each commit, and take the other's away. Where both ask for the
    /// same, the next commit of either sets that for both.
    void JudgeOtherRole(const LineToSet& line) {
        for (const RememberedLine& other : m_file.remembered) {
            if (other.role == m_product.Role() || other.line == line.line || !IsSelected(line, other.line))
                continue;
            const ListedEdit* const edit = EntryOf(m_product, m_file.path, other);
            if (edit != nullptr && !edit->IsFor(m_product.Role()) &&
                SourceLineOf(*edit) != SourceLineOf(line.edit))
                Add(line,
                    Words("selects the line that %s sets, which the %s has committed",
                          edit->file + ":" + std::to_string(edit->line), NameOf(other.role)),
                    _("give each line to one edit"));
        }
    }

    void JudgePlace(const LineToSet& line, const LineInPlace& place, const LineToSet* owner) {
        const std::string where = PlaceOf(place.number);
        if (owner != nullptr)
            return Add(
                line,
                Words("selects %s, as the edit of line %s does", where, std::to_string(owner->edit.line)),
                _("give each line to one edit"));
        const bool mayBeLists =
            m_file.isForgotten || m_file.isUntold || m_file.Remembers(SelectorOf(line.edit));
        if (place.isInBlock && place.text != line.line && !mayBeLists)
            Add(line, Words("%s stands in a managed block of something else", where),
                _("restore that, or leave the line to it"));
    }

    /// A line that surely goes on in the next one is not to be parted from it.
    void JudgeWhole(const Text::ManagedText& text, const LineToSet& line, const LineInPlace& place) {
        if (place.isInBlock || place.text == line.line) return;
        const bool isContinuation =
            place.number > 1 && Text::SurelyGoesOn(text.Line(place.number - 1).text, place.text);
        const std::string_view next =
            place.number < text.LineCount() ? text.Line(place.number + 1).text : std::string_view();
        if (!isContinuation && !Text::SurelyGoesOn(place.text, next)) return;
        const std::string number = std::to_string(place.number - (isContinuation ? 1 : 0));
        Add(line,
            Words("would part line %s of %s, which ends with \"\\\", from the next one", number, m_file.path),
            _("make one line of the two, or disable the edit"));
    }

    void Add(const LineToSet& line, const std::string& text, const std::string& remedy) {
        m_problems.push_back(
            {.file = line.edit.file, .line = line.edit.line, .text = text, .remedy = remedy});
    }

    Deployment& m_product;
    IZETCore& m_core;
    const FileWithLines& m_file;
    std::vector<Problem> m_problems;
};

}  // namespace

std::vector<Problem> ProblemsOfLines(Deployment& product, const FileWithLines& file) {
    return LineJudge(product, file).Run();
}

std::vector<Problem> EditsThatGoOn(Deployment& product) {
    std::vector<Problem> warnings;
    for (const ListedEdit& edit : product.Lists().Targets().edits) {
        const std::string line = edit.param.empty() ? edit.text : edit.param + "=" + edit.value;
        if (edit.path.empty() || !edit.IsInForceFor(product.Role()) || !Text::GoesOn(line)) continue;
        warnings.push_back(
            {.file = edit.file,
             .line = edit.line,
             .text = _("its line ends with \"\\\", and the line after it would be a part of it"),
             .remedy = _("take the \"\\\" out, unless it is text in this format")});
    }
    return warnings;
}

}  // namespace ZET::Deploy
