#include "deploy/edit/PartEdit.h"

#include "deploy/edit/Edits.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"

namespace ZET::Deploy {

namespace {

/// The template of which the file is the working copy, as far as the lists tell; empty: of none.
std::string TemplateOfCopy(Deployment& product, const std::string& path) {
    HostLists& lists = product.Lists();
    const std::string directory = lists.NameOf(product.Param("ZET_CFG_DIR")) + "/";
    const std::string file = lists.NameOf(path);
    if (!file.starts_with(directory)) return "";
    const Target* const entry = lists.EntryOf(file.substr(directory.size()));
    return entry == nullptr ? "" : entry->templateName;
}

/// Other commands know better what may stand in the product's own files.
void WarnOfOwnFile(Deployment& product, const std::string& path, const EditOptions& options) {
    if (product.Lists().NameOf(path) == product.Lists().NameOf(product.FilePath(product.ConfigFile())))
        product.Out().Warning(
            Words("%s: is the main file, in which \"option set\" checks what it sets", path));
    if (options.noMarkers) return;
    const std::string name = TemplateOfCopy(product, path);
    if (!name.empty())
        product.Out().Warning(
            Words("%s: is the working copy of [%s], which no commit takes with a notice in it "
                  "(--no-markers edits without)",
                  path, name));
}

}  // namespace

void PartEdit::ReadAll() {
    m_bytes = ReadFileBytes(Path());
    m_text = LookAtBlocks(m_product, {m_named, Path()}, m_bytes);
    m_part = PartOf(Path(), m_bytes, m_options.section);
}

FileOutcome PartEdit::Make(const std::function<void(IZETConfigFile& file)>& operation) {
    RequireRoomForNotice(Path(), m_text, m_options);
    WarnOfOwnFile(m_product, Path(), m_options);
    return m_edit.Make(EditOfPart(m_product, m_options, Path(), m_bytes, m_part, operation),
                       m_options.noBackup, m_guard.OfLines());
}

}  // namespace ZET::Deploy
