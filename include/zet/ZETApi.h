#ifndef ZET_ZETAPI_H
#define ZET_ZETAPI_H

/// Declared for others: a library defines it and exports it by name. Whatever does not have it stays inside.
/// The pure interfaces need none, since no library defines them.
#define ZET_API __attribute__((visibility("default")))

#endif
