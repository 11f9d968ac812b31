#include "FontWarmUp.h"

#include <fontconfig/fontconfig.h>

namespace platform {

// Fontconfig loads its configuration once per process, atomically: should Qt ask before this
// thread is done, it loads its own copy and one of the two is dropped.
FontWarmUp::FontWarmUp() : m_thread([] { FcInit(); }) {}

FontWarmUp::~FontWarmUp() { m_thread.join(); }

} // namespace platform
