#include "deploy/targets/Render.h"

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "deploy/targets/DiscreetLog.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/ModeBits.h"
#include "zet/IZETConfigFile.h"
#include "zet/IZETTextToSave.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// The operation returns whether it came to its end.
template <typename Operation>
void Perform(Deployment& product, const std::string& templateName, const std::string& path,
             Operation operation) {
    const WrittenLanguage language(product.Core());
    const LoggedFailures failures;
    // The module does not say why it could not save.
    const bool isDone = RemedyErrors(kRemedyOfRendering, operation);
    if (failures.Any() || !isDone) {
        throw Failure({.file = path,
                       .text = Words("the template %s could not be rendered into it", templateName),
                       .remedy = _("the log says why; then run the command again")});
    }
}

/// A template as it is expanded for a role.
struct Expansion {
    const std::string& templateName;
    Role role;
    StringMap& values;
};

/// Does what the module does to process a template, with or without its notice. Null if it cannot be opened.
std::shared_ptr<IZETConfigFile> Expanded(Deployment& product, const Expansion& expansion,
                                         const std::string& name) {
    auto file = product.Config().OpenConfigFileTemplate(expansion.templateName, name, NameOf(expansion.role),
                                                        !HasNotice(product, expansion.templateName));
    if (file) file->ApplyTemplates(expansion.values);
    return file;
}

bool SaveRendering(Deployment& product, const Expansion& expansion, const std::string& name, bool noBackup) {
    const auto file = Expanded(product, expansion, name);
    if (file) file->Save(noBackup);
    return file != nullptr;
}

/// Renders the file in its place, without a record of what was there before.
void RenderExpansion(Deployment& product, const Expansion& expansion, const std::string& name,
                     const std::string& path) {
    Perform(product, expansion.templateName, path,
            [&] { return SaveRendering(product, expansion, name, true); });
}

/// The given values win over the host's own.
StringMap WithHostsValues(HostProduct& product, const StringMap& values) {
    StringMap all = values;
    all.insert(product.TemplateValues().begin(), product.TemplateValues().end());
    return all;
}

/// The mode that the list gives, or else the template's, which is known if it was looked at.
mode_t ModeToGive(Deployment& product, const std::string& templateName, const std::string& file,
                  const std::optional<mode_t>& known = std::nullopt) {
    const Target* const target = product.Lists().EntryOf(templateName);
    if (target != nullptr && target->mode) return *target->mode;
    return known ? *known : ModeOf(file);
}

/// Passes the rendered text to `take`, once. A module that cannot hand it out writes the file `name` for
/// that.
void TellRendering(Deployment& product, const Expansion& expansion, const std::string& name,
                   const std::function<void(std::string_view text)>& take) {
    Perform(product, expansion.templateName, name, [&] {
        const auto file = Expanded(product, expansion, name);
        if (!file) return false;
        if (auto* const text = dynamic_cast<IZETTextToSave*>(file.get())) {
            text->TellText(take);
        } else {
            file->Save(true);
            take(ReadFileBytes(name));
        }
        return true;
    });
}

/// Links are followed. Also none if this user may not look.
std::optional<mode_t> ModeIfThere(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? std::optional(status.st_mode & kModeBits) : std::nullopt;
}

/// Whether a commit that renders `text` would leave the file as it is, with its owner.
bool IsAsRendered(const SeenFile& file, std::string_view text, mode_t mode, bool& isOther) {
    const FileState& state = file.State();
    if (!state.IsRegular()) return false;
    isOther = (state.mode & kModeBits) != mode || !file.HasBytes(text);
    return !isOther && state.owner == geteuid() && state.group == getegid();
}

/// Makes the notice name the working copy to be, and not its stand-in in the private directory, which was
/// read.
std::string NamingWorkingCopy(std::string_view text, const std::string& standIn,
                              const std::string& workingCopy) {
    std::string renamed(text);
    const std::size_t place = renamed.find(standIn);
    if (place != std::string::npos) renamed.replace(place, standIn.size(), workingCopy);
    return renamed;
}

/// Renders a template on trial: nothing outside of the private directory changes.
class Trial {
  public:
    using Take = std::function<void(std::string_view text, mode_t mode)>;

    Trial(Deployment& product, Role role, const Staging& staging, const std::string& templateName)
        : m_product(product),
          m_role(role),
          m_staging(staging),
          m_name(templateName),
          m_workingCopy(WorkingCopy(product, templateName)) {}

    /// Hands the text and the mode that the role gets to `take`.
    void Tell(StringMap& values, const Take& take, std::optional<mode_t> modeOfCopy = std::nullopt) const {
        if (!modeOfCopy) modeOfCopy = ModeIfThere(m_workingCopy);
        if (!modeOfCopy && !IsFileExist(m_workingCopy))
            return TellOfStandIn("templates", TemplateFile(m_product, m_name), values, take);
        TellRendering(m_product, {m_name, m_role, values}, File(), [&](std::string_view text) {
            take(text, ModeToGive(m_product, m_name, m_workingCopy, modeOfCopy));
        });
    }

    /// The same, as if the working copy had this text.
    void TellOfText(const std::string& templateText, StringMap& values, const Take& take) const {
        const std::string source = TemplateFile(m_product, m_name);
        WriteStagedFile(m_staging.PathOf("made-up/" + m_name), templateText, ModeOf(source));
        TellOfStandIn("made-up", source, values, take);
    }

    /// Writes the rendering into a file.
    std::string Write(std::string_view text, mode_t mode) const {
        std::string file = File();
        WriteStagedFile(file, text, mode);
        return file;
    }

    /// Keeps the rendering, which becomes a file if somebody asks for one.
    std::shared_ptr<const StagedText> Keep(std::string_view text, mode_t mode) const {
        return std::make_shared<const StagedText>(m_staging, Name(), text, mode);
    }

  private:
    /// If there is no working copy, the module installs the pristine template: here, into the private
    /// directory.
    void TellOfStandIn(const char* directory, const std::string& source, StringMap& values,
                       const Take& take) const {
        const std::string standIn = m_staging.PathOf(std::string(directory) + "/" + m_name);
        const ParamOverride noSync(m_product.Core(), "ZET_SYNC", "no");
        const ParamOverride templates(m_product.Core(), "ZET_CFG_DIR", m_staging.PathOf(directory));
        TellRendering(m_product, {m_name, m_role, values}, File(), [&](std::string_view text) {
            take(NamingWorkingCopy(text, standIn, m_workingCopy), ModeToGive(m_product, m_name, source));
        });
    }

    std::string Name() const {
        const std::string room =
            m_role == m_product.Role() ? "rendered/" : std::string("rendered-for-") + NameOf(m_role) + "/";
        return room + m_name;
    }

    std::string File() const { return m_staging.PathOf(Name()); }

    Deployment& m_product;
    const Role m_role;
    const Staging& m_staging;
    const std::string& m_name;
    const std::string m_workingCopy;
};

std::string Stage(Deployment& product, Role role, const Staging& staging, const std::string& templateName,
                  StringMap& values) {
    const Trial trial(product, role, staging, templateName);
    std::string file;
    trial.Tell(values, [&](std::string_view text, mode_t mode) { file = trial.Write(text, mode); });
    return file;
}

}  // namespace

bool HasNotice(Deployment& product, const std::string& templateName) {
    const Target* const target = product.Lists().EntryOf(templateName);
    return target == nullptr || target->hasNotice;
}

mode_t ModeOfRendering(Deployment& product, const std::string& templateName) {
    return ModeToGive(product, templateName, TemplateFile(product, templateName));
}

std::string RenderStaged(Deployment& product, const Staging& staging, const std::string& templateName,
                         const StringMap& values) {
    const DiscreetLog log(product, product.HostSecrets(), templateName);
    StringMap all = WithHostsValues(product, values);
    return Stage(product, product.Role(), staging, templateName, all);
}

std::string RenderQuietly(Deployment& product, const Staging& staging, const std::string& templateName,
                          Role role) {
    const QuietLog quiet(ZETLogError);
    return Stage(product, role, staging, templateName, product.TemplateValues());
}

ComparedRendering RenderUnlessThere(Deployment& product, const TrialRequest& request, const SeenFile& there) {
    const auto& [staging, templateName, role, needsText, modeOfCopy] = request;
    if (needsText) return {std::make_shared<StagedText>(RenderQuietly(product, staging, templateName, role))};
    const QuietLog quiet(ZETLogError);
    const Trial trial(product, role, staging, templateName);
    ComparedRendering rendering;
    const auto take = [&](std::string_view text, mode_t mode) {
        if (!IsAsRendered(there, text, mode, rendering.isOther)) rendering.staged = trial.Keep(text, mode);
    };
    trial.Tell(product.TemplateValues(), take, modeOfCopy);
    return rendering;
}

std::string RenderTemplateText(Deployment& product, const Staging& staging, Role role,
                               const std::string& templateName, const std::string& text) {
    const QuietLog quiet(ZETLogError);
    const Trial trial(product, role, staging, templateName);
    std::string file;
    trial.TellOfText(text, product.TemplateValues(),
                     [&](std::string_view made, mode_t mode) { file = trial.Write(made, mode); });
    return file;
}

void RenderOnce(Deployment& product, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values) {
    const DiscreetLog log(product, product.HostSecrets(), templateName);
    StringMap all = WithHostsValues(product, values);
    RenderExpansion(product, {templateName, product.Role(), all}, name, path);
}

void RenderInPlace(Deployment& product, Role role, const std::string& templateName, const std::string& name,
                   const std::string& path) {
    Perform(product, templateName, path, [&] {
        if (!HasNotice(product, templateName))
            return SaveRendering(product, {templateName, role, product.TemplateValues()}, name, false);
        StringMap own = product.Values().Own();
        product.Config().ProcessConfigFileTemplate(templateName, name, NameOf(role), &own);
        return true;
    });
}

void RenderWithoutRecord(Deployment& product, Role role, const std::string& templateName,
                         const std::string& name, const std::string& path) {
    RenderExpansion(product, {templateName, role, product.TemplateValues()}, name, path);
}

}  // namespace ZET::Deploy
