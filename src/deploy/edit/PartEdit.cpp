#include "deploy/edit/PartEdit.h"

#include "deploy/edit/Edits.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

/// Compares the last names first, which needs no look at the host: no link stands behind either of them.
bool IsMainFile(Deployment& product, const std::string& name) {
    const std::string main = product.Param("ZET_CFG");
    return BaseNameOf(main) == BaseNameOf(name) && product.Lists().NameOf(main) == name;
}

/// The template of which the file is the working copy, as far as the lists tell; empty: of none.
std::string TemplateOfCopy(Deployment& product, const std::string& name) {
    HostLists& lists = product.Lists();
    const std::string directory = lists.NameOf(product.Param("ZET_CFG_DIR")) + "/";
    if (!name.starts_with(directory)) return "";
    const Target* const entry = lists.EntryOf(name.substr(directory.size()));
    return entry == nullptr ? "" : entry->templateName;
}

/// Other commands know better what may stand in the product's own files. `name` is the file's one name.
void WarnOfOwnFile(Deployment& product, const std::string& path, const std::string& name,
                   const EditOptions& options) {
    if (IsMainFile(product, name))
        product.Out().Warning(
            Words("%s: is the main file, in which \"option set\" and \"option unset\" check what they change",
                  path));
    if (options.noMarkers) return;
    const std::string copied = TemplateOfCopy(product, name);
    if (!copied.empty())
        product.Out().Warning(
            Words("%s: is the working copy of [%s], which no commit takes with a notice in it "
                  "(--no-markers edits without)",
                  path, copied));
}

}  // namespace

void PartEdit::ReadAll() {
    m_bytes = ReadFileBytes(Path());
    m_text = LookAtBlocks(m_product, {m_named, Path()}, m_bytes);
    m_part = PartOf(Path(), m_bytes, m_options.section);
}

FileOutcome PartEdit::Make(const std::function<void(IZETConfigFile& file)>& operation) {
    RequireRoomForNotice(Path(), m_text, m_options);
    FileOutcome outcome = m_edit.Make(EditOfPart(m_product, m_options, Path(), m_bytes, m_part, operation),
                                      m_options.noBackup, m_guard.OfLines());
    if (outcome.result == FileOutcome::Result::Changed)
        WarnOfOwnFile(m_product, Path(), m_edit.Name(), m_options);
    return outcome;
}

}  // namespace ZET::Deploy
