// Replaces the C library's resolver with one that never answers. The log says for which name it was
// called.
#include <netdb.h>
#include <unistd.h>

#include "Logging.h"

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" int __wrap_getaddrinfo(const char* name, const char*, const addrinfo*, addrinfo**) {
  logAppUni("resolver", 2, __FILE__, __LINE__, "silent about %s", name);
  for (;;) ::pause();
}
// NOLINTEND(bugprone-reserved-identifier)
