#ifndef ZET_TEMPLATE_UPGRADE_H
#define ZET_TEMPLATE_UPGRADE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "deploy/host/FileVersion.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/TemplateStates.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Brings working copies up to the shipped templates. From the constructor on, nobody else writes. All new
/// texts are made first, and written only if there is no problem with any of them.
class TemplateUpgrade {
  public:
    /// Without names, takes all installed templates that the list has for the role.
    TemplateUpgrade(Deployment& product, const std::vector<std::string>& names);

    /// Why nothing can be written; empty if it can.
    const std::vector<Problem>& Problems() const { return m_problems; }

    /// Reports each template to the observer. Returns whether anything was, or would be, changed.
    bool Run();

  private:
    struct Copy {
        TemplateFiles files;
        std::string path;  ///< of the real working copy
        FileVersion version;
        TemplateTexts texts;
        std::string text;  ///< the new text
        mode_t mode = 0;
        mode_t ownMode = 0;  ///< the mode that the product gave it
        std::string staged;

        bool IsChange() const { return text != texts.copy || texts.newerMode; }
    };

    void Plan(Copy& copy);
    void MergeInto(Copy& copy);
    bool CanBeMerged(const Copy& copy);
    void Object(const std::string& file, std::size_t line, const std::string& text,
                const std::string& remedy);
    std::string WayToInstall(const Copy& copy) const;
    ExpectedFile Expected(const Copy& copy) const;
    FileOutcome OutcomeOf(const Copy& copy) const;
    void Write(const Copy& copy);
    void RememberRest();

    Deployment& m_product;
    std::vector<Copy> m_copies;
    std::unique_ptr<Writing> m_writing;
    std::unique_ptr<Staging> m_staging;  ///< made under the lock, which tells of a run that was killed
    std::vector<Problem> m_problems;
};

}  // namespace ZET::Deploy

#endif
