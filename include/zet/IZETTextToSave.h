#ifndef ZET_IZETTEXT_TO_SAVE_H
#define ZET_IZETTEXT_TO_SAVE_H

#include <functional>
#include <string_view>

namespace ZET {

/// An optional service of an opened file beyond `IZETConfigFile`: it hands out its text instead of saving it.
/// Ask for it with a `dynamic_cast`; files of other modules need not provide it.
class IZETTextToSave {
  public:
    /// Prepares the text as `IZETConfigFile::Save` would, and calls `take` with it once; neither the file nor
    /// its reserve is touched. The view is valid during that call, whose exceptions pass through. As `Save`,
    /// it may be called only on an opened file, by the thread that uses the file.
    virtual void TellText(const std::function<void(std::string_view text)>& take) = 0;

  protected:
    IZETTextToSave() = default;
    ~IZETTextToSave() = default;
    IZETTextToSave(const IZETTextToSave&) = default;
    IZETTextToSave& operator=(const IZETTextToSave&) = default;
};

}  // namespace ZET

#endif
