#pragma once

namespace platform {

// For processes that hold the master password: no core file, and no other process of the
// user may attach to this one or read its memory.
void hardenProcess();

} // namespace platform
