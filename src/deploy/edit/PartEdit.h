#ifndef ZET_PART_EDIT_H
#define ZET_PART_EDIT_H

#include <functional>
#include <string>

#include "deploy/edit/CommitGuard.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/FilePart.h"
#include "deploy/edit/SoundBlocks.h"
#include "deploy/targets/Deployment.h"
#include "zet/IZETConfigFile.h"
#include "zet/deploy/EditOptions.h"

namespace ZET::Deploy {

/// One edit of lines of a file, or of one of its sections.
class PartEdit {
  public:
    /// `file` and `options` must outlive the object. Reading throws a `Failure` if blocks are damaged.
    PartEdit(Deployment& product, const std::string& file, const EditOptions& options)
        : m_product(product),
          m_named(file),
          m_options(options),
          m_edit(product, file),
          m_guard(product, Path(), options) {}

    void ReadAll();

    /// Shows the whole file to `look`, line after line, for edits that need no `Part`.
    void ReadLines(const AlsoLook& look) { m_text = LookAtBlocks(m_product, {m_named, Path()}, look); }

    const std::string& Path() const { return m_edit.Path(); }
    const Text::TextToEdit& Text() const { return m_text; }
    const FilePart& Part() const { return m_part; }

    FileOutcome LeaveUnchanged(const std::string& remark) const { return m_edit.LeaveUnchanged(remark); }
    FileOutcome Make(const std::function<void(IZETConfigFile& file)>& operation);

  private:
    Deployment& m_product;
    const std::string& m_named;
    const EditOptions& m_options;
    FileEdit m_edit;
    CommitGuard m_guard;
    std::string m_bytes;
    Text::TextToEdit m_text;
    FilePart m_part;
};

}  // namespace ZET::Deploy

#endif
