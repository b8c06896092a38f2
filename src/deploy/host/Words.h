#ifndef ZET_DEPLOY_WORDS_H
#define ZET_DEPLOY_WORDS_H

#include "text/Words.h"  // IWYU pragma: export

namespace ZET::Deploy {
using Text::_;
using Text::Words;
}  // namespace ZET::Deploy

#endif
