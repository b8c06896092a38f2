#ifndef ZET_DEPLOY_VALUES_H
#define ZET_DEPLOY_VALUES_H

#include "zet/ZETApi.h"
#include "zet/ZETTypes.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// The template values of the host by placeholder, such as "${realm}".
ZET_API StringMap Values(Product& product);

}  // namespace ZET::Deploy

#endif
