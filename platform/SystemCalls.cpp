#include "SystemCalls.h"

#include <unistd.h>

namespace platform::sys {

int (*close)(int fd) = ::close;
int (*syncfs)(int fd) = ::syncfs;

} // namespace platform::sys
