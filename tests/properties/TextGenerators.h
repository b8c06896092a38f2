#ifndef ZET_TESTS_TEXT_GENERATORS_H
#define ZET_TESTS_TEXT_GENERATORS_H

#include <rapidcheck.h>

#include <cstddef>
#include <string>
#include <vector>

#include "zet/ZETTypes.h"

namespace ZET {

using Words = std::vector<std::string>;

/// Up to `most` elements: RapidCheck's own containers grow far beyond a small file.
template <typename T>
rc::Gen<std::vector<T>> UpTo(int most, rc::Gen<T> element) {
    return rc::gen::mapcat(rc::gen::inRange(0, most + 1), [element](int count) {
        return rc::gen::container<std::vector<T>>(static_cast<std::size_t>(count), element);
    });
}

rc::Gen<std::string> OneOfWords(Words words);

/// The exact marker texts.
const Words& Markers();

/// Lines joined by line feeds, with or without one at the end: settings, markers of every kind, placeholders,
/// any bytes, sometimes a long line or very many of them.
rc::Gen<std::string> AnyText();

/// A text mostly of marker lines.
rc::Gen<std::string> MarkerText();

/// Up to `most` fragments of placeholders, joined; may contain line feeds.
rc::Gen<std::string> PlaceholderScraps(int most);

/// Keys that are placeholders, and a few that are not.
rc::Gen<StringMap> AnyValues();

/// What callers put into a line: anything, including line feeds.
rc::Gen<std::string> AnyNewText();

}  // namespace ZET

#endif
