#ifndef ZET_FILE_STREAM_H
#define ZET_FILE_STREAM_H

#include <array>
#include <ostream>
#include <streambuf>
#include <utility>

#include "FileAccess.h"

namespace ZET {

/// Buffers a stream's output and writes it to a file. Bytes that could not be written are lost.
class FileStreamBuffer : public std::streambuf {
  public:
    explicit FileStreamBuffer(Descriptor file);
    ~FileStreamBuffer() override;

  protected:
    int_type overflow(int_type byte) override;
    int sync() override;

  private:
    Descriptor m_file;
    std::array<char, 4096> m_bytes = {};
};

/// A stream into a file that is already open. `std::ofstream` opens a path, which could lead somewhere else
/// by then.
class FileStream : public std::ostream {
  public:
    explicit FileStream(Descriptor file) : std::ostream(nullptr), m_buffer(std::move(file)) {
        rdbuf(&m_buffer);
    }

  private:
    FileStreamBuffer m_buffer;
};

}  // namespace ZET

#endif
