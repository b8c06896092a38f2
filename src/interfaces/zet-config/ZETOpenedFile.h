#ifndef ZET_ZETOPENED_FILE_H
#define ZET_ZETOPENED_FILE_H

#include <functional>
#include <string_view>

#include "ZETConfigFile.h"
#include "zet/IZETTextToSave.h"

namespace ZET {

/// The class of the files that `CZETConfig` returns. It is separate because callers use the virtual functions
/// of `CZETConfigFile` by their positions, so that none can be added there.
class CZETOpenedFile : public CZETConfigFile, public IZETTextToSave {
  public:
    using CZETConfigFile::CZETConfigFile;

    void TellText(const std::function<void(std::string_view text)>& take) override { take(TextToSave()); }
};

}  // namespace ZET

#endif
