#include "deploy/edit/PartEdit.h"

#include "deploy/edit/Edits.h"
#include "deploy/host/FileBytes.h"

namespace ZET::Deploy {

void PartEdit::ReadAll() {
    m_bytes = ReadFileBytes(Path());
    m_text = LookAtBlocks(m_product, {m_named, Path()}, m_bytes);
    m_part = PartOf(Path(), m_bytes, m_options.section);
}

FileOutcome PartEdit::Make(const std::function<void(IZETConfigFile& file)>& operation) {
    RequireRoomForNotice(Path(), m_text, m_options);
    return m_edit.Make(EditOfPart(m_product, m_options, Path(), m_bytes, m_part, operation),
                       m_options.noBackup, m_guard.OfLines());
}

}  // namespace ZET::Deploy
