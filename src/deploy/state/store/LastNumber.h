#ifndef ZET_STORE_LAST_NUMBER_H
#define ZET_STORE_LAST_NUMBER_H

#include <cstdint>
#include <string>

namespace ZET::Deploy {

/// The number of the last entry, kept beside the store's file: a journal with a broken byte ends before that
/// byte, and nothing in the database tells that there was more. It is written when the entry is on the disk,
/// so there was an entry of this number. 0 if nobody knows, as when the number itself was lost.
std::int64_t LastNumberBeside(const std::string& file);

void KeepLastNumber(const std::string& file, std::int64_t number);
void ForgetLastNumber(const std::string& file);

}  // namespace ZET::Deploy

#endif
