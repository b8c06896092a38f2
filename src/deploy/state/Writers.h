#ifndef ZET_WRITERS_H
#define ZET_WRITERS_H

#include <string>

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// Who wrote a file between its reserve and what the product left last.
enum class Writers {
    ProductAlone,
    OthersToo,
    NotKept  ///< the history cannot tell
};

/// Found out from the entries: each begins with what the one before it left, unless somebody wrote in
/// between. An undo may have put back what others wrote; the entries before it tell whether they did. An
/// unusable history is reported as a warning.
Writers WritersSince(const std::string& reserve, const KnownFile& known, Host& host);

}  // namespace ZET::Deploy

#endif
