#include "FileStream.h"

#include <cstddef>
#include <string_view>
#include "posix/ReadWrite.h"

namespace ZET {

FileStreamBuffer::FileStreamBuffer(Descriptor file) : m_file(std::move(file)) {
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

FileStreamBuffer::~FileStreamBuffer() {
    // Callers who need to know whether everything was written flush the stream first.
    FileStreamBuffer::sync();
}

FileStreamBuffer::int_type FileStreamBuffer::overflow(int_type byte) {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(byte, traits_type::eof())) sputc(traits_type::to_char_type(byte));
    return traits_type::not_eof(byte);
}

int FileStreamBuffer::sync() {
    const std::string_view collected(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    const bool isWritten = WriteAll(m_file, collected);
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    return isWritten ? 0 : -1;
}

}  // namespace ZET
