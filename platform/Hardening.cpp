#include "Hardening.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace platform {

void hardenProcess() {
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::prctl(PR_SET_DUMPABLE, 0);
}

} // namespace platform
