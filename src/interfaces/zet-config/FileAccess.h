#ifndef ZET_FILE_ACCESS_H
#define ZET_FILE_ACCESS_H

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <utility>

#include "Buffer.h"

namespace ZET {

/// An open file, closed at the end of its life. A failure to close is not reported: what must be on disk is
/// made durable before.
class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    void Close();

  private:
    int m_descriptor;
};

/// Whether the path can be that of a file. The system would take one that holds a NUL byte for the shorter
/// name of another file.
bool IsFileName(const std::string& path);

/// Opens for reading; never waits, whatever the path leads to.
FileDescriptor OpenForReading(const std::string& path);

/// Opens for writing a file that is to be emptied: a new one, or a left-over of a save that was cut short.
/// Not open when the path leads to anything but a regular file of that one name; nothing is changed then.
FileDescriptor OpenTemporary(const std::string& path);

/// Appends what the file holds; false when it is no regular file (`status` is its status) or reading breaks
/// off.
bool ReadAll(const FileDescriptor& file, const struct stat& status, Buffer& bytes);

/// False when not all bytes could be written.
bool WriteAll(const FileDescriptor& file, std::string_view bytes);

/// Changes the permission bits to those of `mode`, whatever the process's file-creation mask is.
void SetMode(const FileDescriptor& file, mode_t mode);

}  // namespace ZET

#endif
