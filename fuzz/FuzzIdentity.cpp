// A file that is opened without markers and saved without edits stays the same, whatever it contains.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "Player.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const std::string written = ZET::TextWrittenBack(text);
    if (written == text) return 0;
    std::cerr << ZET::Quoted(text) << "\nwas written back as\n" << ZET::Quoted(written) << "\n";
    std::abort();
}
