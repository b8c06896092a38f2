#include "deploy/state/store/Compression.h"

#include <zstd.h>

#include <memory>
#include <new>
#include <stdexcept>

#include "deploy/host/Words.h"
#include "deploy/state/store/Library.h"
#include "deploy/state/store/PlainFrame.h"

namespace ZET::Deploy {

namespace {

constexpr int kLevel = 1;

struct Zstd {
    decltype(ZSTD_createCCtx)* createContext;
    decltype(ZSTD_freeCCtx)* freeContext;
    decltype(ZSTD_CCtx_setParameter)* setParameter;
    decltype(ZSTD_compress2)* compress;
    decltype(ZSTD_compressBound)* bound;
    decltype(ZSTD_createDCtx)* createReader;
    decltype(ZSTD_freeDCtx)* freeReader;
    decltype(ZSTD_decompressDCtx)* decompress;
    decltype(ZSTD_getFrameContentSize)* sizeOf;
    decltype(ZSTD_isError)* isError;
    decltype(ZSTD_getErrorName)* errorName;

    Zstd() {
        const Library library("libzstd.so.1", "libzstd1");
        library.Find(createContext, "ZSTD_createCCtx");
        library.Find(freeContext, "ZSTD_freeCCtx");
        library.Find(setParameter, "ZSTD_CCtx_setParameter");
        library.Find(compress, "ZSTD_compress2");
        library.Find(bound, "ZSTD_compressBound");
        library.Find(createReader, "ZSTD_createDCtx");
        library.Find(freeReader, "ZSTD_freeDCtx");
        library.Find(decompress, "ZSTD_decompressDCtx");
        library.Find(sizeOf, "ZSTD_getFrameContentSize");
        library.Find(isError, "ZSTD_isError");
        library.Find(errorName, "ZSTD_getErrorName");
    }
};

const Zstd& TheZstd() {
    static const Zstd zstd;
    return zstd;
}

/// Uses its memory again for the next text.
class Context {
  public:
    Context() : m_context(TheZstd().createContext(), TheZstd().freeContext) {
        if (!m_context) throw std::bad_alloc();
        Require(TheZstd().setParameter(m_context.get(), ZSTD_c_compressionLevel, kLevel));
        Require(TheZstd().setParameter(m_context.get(), ZSTD_c_checksumFlag, 1));
    }

    std::string Compress(std::string_view text) {
        // Only as much of it is touched as the frame needs.
        const std::size_t size = TheZstd().bound(text.size());
        const auto room = std::make_unique_for_overwrite<char[]>(size);
        const std::size_t length =
            Require(TheZstd().compress(m_context.get(), room.get(), size, text.data(), text.size()));
        return {room.get(), length};
    }

  private:
    static std::size_t Require(std::size_t result) {
        if (TheZstd().isError(result) != 0) Fail(result);
        return result;
    }

    /// The room is large enough, and the parameters are known, so only memory can be short.
    [[noreturn]] static void Fail(std::size_t result) {
        if (std::string_view(TheZstd().errorName(result)).find("memory") != std::string_view::npos)
            throw std::bad_alloc();
        throw std::logic_error(Words("a text could not be compressed: %s", TheZstd().errorName(result)));
    }

    std::unique_ptr<ZSTD_CCtx, decltype(ZSTD_freeCCtx)*> m_context;
};

/// The same for expanding.
class Reader {
  public:
    Reader() : m_context(TheZstd().createReader(), TheZstd().freeReader) {
        if (!m_context) throw std::bad_alloc();
    }

    std::optional<std::string> Expand(std::string_view frame, std::size_t size) {
        std::string text(size, '\0');
        const std::size_t length =
            TheZstd().decompress(m_context.get(), text.data(), text.size(), frame.data(), frame.size());
        if (TheZstd().isError(length) != 0 || length != size) return std::nullopt;
        return text;
    }

    std::optional<bool> IsOf(std::string_view frame, std::string_view text) {
        const auto room = std::make_unique_for_overwrite<char[]>(text.size());
        const std::size_t length =
            TheZstd().decompress(m_context.get(), room.get(), text.size(), frame.data(), frame.size());
        if (TheZstd().isError(length) != 0 || length != text.size()) return std::nullopt;
        return std::string_view(room.get(), length) == text;
    }

  private:
    std::unique_ptr<ZSTD_DCtx, decltype(ZSTD_freeDCtx)*> m_context;
};

/// Lives as long as the process: an object of a thread's own takes memory to be destroyed later, and the C
/// library ends the program if there is none.
Reader& TheReader() {
    static Reader& reader = *new Reader;
    return reader;
}

}  // namespace

std::string Compressed(std::string_view text) {
    if (text.size() <= kLongestPlainText) return PlainFrame(text);
    static Context& context = *new Context;
    return context.Compress(text);
}

std::optional<std::string> Expanded(std::string_view frame, std::size_t size) {
    if (const auto text = TextOfPlainFrame(frame); text && text->size() == size) return std::string(*text);
    // The frame has the size that was kept, whatever the limits are today; a damaged number takes no memory.
    if (TheZstd().sizeOf(frame.data(), frame.size()) != size) return std::nullopt;
    return TheReader().Expand(frame, size);
}

std::optional<bool> IsFrameOf(std::string_view frame, std::string_view text) {
    if (const auto plain = TextOfPlainFrame(frame); plain && plain->size() == text.size())
        return *plain == text;
    if (TheZstd().sizeOf(frame.data(), frame.size()) != text.size()) return std::nullopt;
    return TheReader().IsOf(frame, text);
}

}  // namespace ZET::Deploy
