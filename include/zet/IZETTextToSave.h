#ifndef ZET_IZETTEXT_TO_SAVE_H
#define ZET_IZETTEXT_TO_SAVE_H

#include <functional>
#include <string_view>

namespace ZET {

/// What an opened file can do beyond `IZETConfigFile`: tell its text instead of saving it. Who wants that
/// asks for it with a `dynamic_cast`; the files of another module than this product's need not have it.
class IZETTextToSave {
  public:
    /// Does to the text what `IZETConfigFile::Save` does, and calls `take` with it, once; neither the file
    /// nor its reserve is looked at. The view is valid during that call, whose exceptions pass through. Only
    /// on a file that was opened, as `Save`; by the thread that uses the file.
    virtual void TellText(const std::function<void(std::string_view text)>& take) = 0;

  protected:
    IZETTextToSave() = default;
    ~IZETTextToSave() = default;
    IZETTextToSave(const IZETTextToSave&) = default;
    IZETTextToSave& operator=(const IZETTextToSave&) = default;
};

}  // namespace ZET

#endif
