#include "deploy/edit/RestoreRules.h"

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/targets/EditRules.h"
#include "text/ManagedText.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

class RestoreCheck {
  public:
    RestoreCheck(IZETCore& core, const RestoreRequest& request, const Text::ManagedText& text)
        : m_core(core),
          m_request(request),
          m_text(text),
          m_formerPattern("^" + std::string(ZETFormerLinePrefix) +
                          (request.pattern.starts_with('^') ? request.pattern.substr(1) : request.pattern)) {}

    bool Run() {
        CheckLines();
        for (const Text::ManagedRegion& region : m_text.Regions()) {
            if (region.kind == Text::RegionKind::Block) CheckBlock(region);
        }
        if (!m_isSomething && !(m_request.allBlocks && !m_others.empty())) return false;
        if (!m_others.empty() && !m_request.allBlocks) {
            throw Failure(
                {.file = m_request.path,
                 .text = Words("the restore would also drop managed blocks of others, in lines %s", m_others),
                 .remedy = _("--all-blocks drops them too, \"explain\" tells what they are")});
        }
        return true;
    }

  private:
    /// Checks the lines outside of blocks: the module takes those that the pattern selects for former ones.
    void CheckLines() {
        for (std::size_t number = 1; number <= m_text.LineCount(); ++number) {
            if (m_text.RegionOf(number).kind == Text::RegionKind::Block) continue;
            const std::string_view line = m_text.Line(number).text;
            if (!Matches(m_formerPattern, line)) continue;
            if (!line.starts_with(ZETFormerLinePrefix)) {
                throw UsageError(
                    Words("\"%s\" also selects line %s of %s, which keeps no former line (put alternatives "
                          "in parentheses)",
                          m_request.pattern, NumberOf(number), m_request.path));
            }
            m_isSomething = true;
        }
    }

    void CheckBlock(const Text::ManagedRegion& block) {
        bool isAllOurs = true;
        for (std::size_t number = block.first + 1; number < block.last; ++number) {
            const std::string_view line = m_text.Line(number).text;
            const bool isOurs = Matches(m_request.content, line);
            isAllOurs = isAllOurs && isOurs;
            m_isSomething = m_isSomething || isOurs;
        }
        if (block.formerLine != 0) isAllOurs = Matches(m_formerPattern, m_text.Line(block.formerLine).text);
        if (isAllOurs) return;
        m_others += (m_others.empty() ? "" : ", ") + NumberOf(block.first) + "-" + NumberOf(block.last);
    }

    std::string NumberOf(std::size_t line) const { return std::to_string(m_request.linesBefore + line); }

    bool Matches(const std::string& pattern, std::string_view line) {
        return Selects(m_core, pattern, std::string(line));
    }

    IZETCore& m_core;
    const RestoreRequest& m_request;
    const Text::ManagedText& m_text;
    std::string m_formerPattern;
    bool m_isSomething = false;
    std::string m_others;  ///< lines of the blocks that the restore is not about
};

}  // namespace

bool HasSomethingToRestore(IZETCore& core, const RestoreRequest& request) {
    return RestoreCheck(core, request, Text::ManagedText(request.text)).Run();
}

}  // namespace ZET::Deploy
