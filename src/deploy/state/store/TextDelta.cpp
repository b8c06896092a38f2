#include "deploy/state/store/TextDelta.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "deploy/state/store/Digest.h"
#include "deploy/state/store/Packing.h"

namespace ZET::Deploy {

namespace {

/// No compressed text begins so.
constexpr std::string_view kMagicOfDelta = "ZETD";

/// A delta that does not fit into a page of the store with the rest of its row is not worth it.
constexpr std::size_t kLongestFrame = 3000;

/// How many bytes two texts have in common at the beginning. Compares whole blocks first.
std::size_t CommonBegin(std::string_view one, std::string_view other) {
    constexpr std::size_t kBlock = 4096;
    const std::size_t most = std::min(one.size(), other.size());
    std::size_t at = 0;
    while (most - at >= kBlock && std::memcmp(one.data() + at, other.data() + at, kBlock) == 0)
        at += kBlock;
    while (at < most && one[at] == other[at])
        ++at;
    return at;
}

std::size_t CommonEnd(std::string_view one, std::string_view other) {
    constexpr std::size_t kBlock = 4096;
    const std::size_t most = std::min(one.size(), other.size());
    const char* const endOfOne = one.data() + one.size();
    const char* const endOfOther = other.data() + other.size();
    std::size_t count = 0;
    while (most - count >= kBlock &&
           std::memcmp(endOfOne - count - kBlock, endOfOther - count - kBlock, kBlock) == 0)
        count += kBlock;
    while (count < most && *(endOfOne - count - 1) == *(endOfOther - count - 1))
        ++count;
    return count;
}

TextDelta::Piece PartOfPiece(const TextDelta::Piece& piece, std::size_t from, std::size_t length) {
    if (!piece.own.empty()) return {piece.own.substr(from, length), 0, length};
    return {{}, piece.offset + from, length};
}

/// Joins neighbours that both have bytes of their own.
void AppendPiece(std::vector<TextDelta::Piece>& pieces, TextDelta::Piece piece) {
    TextDelta::Piece* const last = pieces.empty() ? nullptr : &pieces.back();
    if (last != nullptr && !last->own.empty() && !piece.own.empty()) {
        last->own += piece.own;
        last->length += piece.length;
    } else {
        pieces.push_back(std::move(piece));
    }
}

/// Appends what the text has from one byte up to the other.
void AppendPart(std::vector<TextDelta::Piece>& pieces, const TextDelta& delta, std::size_t from,
                std::size_t to) {
    std::size_t at = 0;
    for (const TextDelta::Piece& piece : delta.pieces) {
        const std::size_t first = std::max(from, at);
        const std::size_t last = std::min(to, at + piece.length);
        if (first < last) AppendPiece(pieces, PartOfPiece(piece, first - at, last - first));
        at += piece.length;
    }
}

template <typename Number>
bool IsNumber(const std::string& text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

TextDelta DeltaOfWhole(std::int64_t base, std::size_t size) {
    TextDelta delta;
    delta.base = base;
    if (size > 0) delta.pieces.push_back({{}, 0, size});
    return delta;
}

std::optional<TextDelta> DeltaFrom(const TextDelta& delta, std::string_view former, std::string_view text) {
    const std::size_t begin = CommonBegin(former, text);
    const std::size_t end = CommonEnd(former.substr(begin), text.substr(begin));
    const std::string_view own = text.substr(begin, text.size() - begin - end);
    if (own.size() > kLongestFrame) return std::nullopt;
    TextDelta made;
    made.base = delta.base;
    made.seal = SealOf(text);
    AppendPart(made.pieces, delta, 0, begin);
    if (!own.empty()) AppendPiece(made.pieces, {std::string(own), 0, own.size()});
    AppendPart(made.pieces, delta, former.size() - end, former.size());
    return FrameOf(made).size() <= kLongestFrame ? std::optional(std::move(made)) : std::nullopt;
}

std::string FrameOf(const TextDelta& delta) {
    std::vector<std::string> texts = {std::to_string(delta.base), std::to_string(delta.seal)};
    for (const TextDelta::Piece& piece : delta.pieces) {
        texts.push_back(piece.own);
        texts.push_back(std::to_string(piece.offset));
        texts.push_back(std::to_string(piece.length));
    }
    return std::string(kMagicOfDelta) + Packed(texts);
}

bool IsFrameOfDelta(std::string_view frame) {
    return frame.starts_with(kMagicOfDelta);
}

std::optional<TextDelta> DeltaOfFrame(std::string_view frame) {
    const auto texts = Unpacked(frame.substr(kMagicOfDelta.size()));
    constexpr std::size_t kFirst = 2;
    constexpr std::size_t kOfPiece = 3;
    if (!texts || texts->size() < kFirst || (texts->size() - kFirst) % kOfPiece != 0) return std::nullopt;
    TextDelta delta;
    if (!IsNumber((*texts)[0], delta.base) || !IsNumber((*texts)[1], delta.seal)) return std::nullopt;
    for (std::size_t i = kFirst; i < texts->size(); i += kOfPiece) {
        TextDelta::Piece piece{(*texts)[i]};
        if (!IsNumber((*texts)[i + 1], piece.offset) || !IsNumber((*texts)[i + 2], piece.length))
            return std::nullopt;
        delta.pieces.push_back(std::move(piece));
    }
    return delta;
}

std::optional<std::string> Made(const TextDelta& delta, std::string_view base, std::size_t size) {
    std::string text;
    for (const TextDelta::Piece& piece : delta.pieces) {
        const std::string_view from = piece.own.empty() ? base : std::string_view(piece.own);
        if (piece.offset > from.size() || piece.length > from.size() - piece.offset) return std::nullopt;
        if (piece.length > size - text.size()) return std::nullopt;
        if (text.empty()) text.reserve(std::min(size, base.size() + kLongestFrame));
        text.append(from.substr(piece.offset, piece.length));
    }
    if (text.size() != size || SealOf(text) != delta.seal) return std::nullopt;
    return text;
}

}  // namespace ZET::Deploy
