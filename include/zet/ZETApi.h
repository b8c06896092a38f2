#ifndef ZET_ZETAPI_H
#define ZET_ZETAPI_H

/// Marks what a library exports by name; everything without it stays internal. The pure interfaces do not
/// need it, since no library defines them.
#define ZET_API __attribute__((visibility("default")))

#endif
