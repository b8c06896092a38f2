#ifndef ZET_ZETOPENED_FILE_H
#define ZET_ZETOPENED_FILE_H

#include <functional>
#include <string_view>

#include "ZETConfigFile.h"
#include "zet/IZETTextToSave.h"

namespace ZET {

/// A file as the manager hands it out. A class of its own, since others call the operations of a
/// `CZETConfigFile` by their places, among which there is none for another one.
class CZETOpenedFile : public CZETConfigFile, public IZETTextToSave {
  public:
    using CZETConfigFile::CZETConfigFile;

    void TellText(const std::function<void(std::string_view text)>& take) override { take(TextToSave()); }
};

}  // namespace ZET

#endif
