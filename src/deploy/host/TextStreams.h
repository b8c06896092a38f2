#ifndef ZET_TEXT_STREAMS_H
#define ZET_TEXT_STREAMS_H

#include <sstream>
#include <string>

namespace ZET::Deploy {

/// The standard streams of texts end silently, with a part of the text, when memory runs out. These throw.
class TextReader : public std::istringstream {
  public:
    explicit TextReader(const std::string& text) : std::istringstream(text) { exceptions(badbit); }
};

class TextWriter : public std::ostringstream {
  public:
    TextWriter() { exceptions(badbit); }
};

}  // namespace ZET::Deploy

#endif
