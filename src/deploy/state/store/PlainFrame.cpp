#include "deploy/state/store/PlainFrame.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdint>

namespace ZET::Deploy {

namespace {

constexpr std::uint32_t kMagicOfZstd = 0xfd2fb528;
constexpr std::uint32_t kChecksummedSegment = 0b0010'0100;  ///< one segment, with a checksum
constexpr std::uint32_t kTwoBytesOfSize = 0b0100'0000;
constexpr std::size_t kFirstOfTwoBytes = 256;
constexpr std::uint32_t kLastBlock = 1;  ///< which is raw
constexpr unsigned kFlagsOfBlock = 3;
constexpr std::size_t kSizeOfChecksum = 4;

void AppendNumber(std::string& frame, std::uint64_t number, int bytes) {
    for (int byte = 0; byte < bytes; ++byte)
        frame += static_cast<char>(number >> (8 * byte));
}

std::string HeaderOf(std::size_t size) {
    std::string header;
    AppendNumber(header, kMagicOfZstd, 4);
    if (size < kFirstOfTwoBytes) {
        AppendNumber(header, kChecksummedSegment, 1);
        AppendNumber(header, size, 1);
    } else {
        AppendNumber(header, kChecksummedSegment | kTwoBytesOfSize, 1);
        AppendNumber(header, size - kFirstOfTwoBytes, 2);
    }
    AppendNumber(header, kLastBlock | size << kFlagsOfBlock, 3);
    return header;
}

std::string ChecksumOf(std::string_view text) {
    std::string checksum;
    XXH64_state_t state;
    XXH64_reset(&state, 0);
    XXH64_update(&state, text.data(), text.size());
    AppendNumber(checksum, XXH64_digest(&state), kSizeOfChecksum);
    return checksum;
}

}  // namespace

std::string PlainFrame(std::string_view text) {
    std::string frame = HeaderOf(text.size());
    frame.reserve(frame.size() + text.size() + kSizeOfChecksum);
    return frame.append(text).append(ChecksumOf(text));
}

std::optional<std::string_view> TextOfPlainFrame(std::string_view frame) {
    // The text's size follows from the frame's, so only one header can be right.
    for (const std::size_t sizeOfHeader : {HeaderOf(0).size(), HeaderOf(kFirstOfTwoBytes).size()}) {
        if (frame.size() < sizeOfHeader + kSizeOfChecksum) continue;
        const std::string_view text =
            frame.substr(sizeOfHeader, frame.size() - sizeOfHeader - kSizeOfChecksum);
        if (text.size() > kLongestPlainText || !frame.starts_with(HeaderOf(text.size()))) continue;
        if (HeaderOf(text.size()).size() == sizeOfHeader && frame.ends_with(ChecksumOf(text))) return text;
    }
    return std::nullopt;
}

}  // namespace ZET::Deploy
