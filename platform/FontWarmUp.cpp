#include "FontWarmUp.h"

#include "FileSupport.h"

#include <fcntl.h>
#include <fontconfig/fontconfig.h>

namespace platform {

namespace {

// Asks the kernel to read the file that fontconfig picks for `pattern` into the page cache,
// so that the text laid out later does not wait for the disk.
void prefetchFaceFor(const char* pattern) {
    FcPattern* wanted = FcNameParse(reinterpret_cast<const FcChar8*>(pattern));
    if (!wanted)
        return;
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result = FcResultNoMatch;
    if (FcPattern* match = FcFontMatch(nullptr, wanted, &result)) {
        FcChar8* file = nullptr;
        if (FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch) {
            const char* path = reinterpret_cast<const char*>(file);
            const ScopedFd face(::open(path, O_RDONLY | O_CLOEXEC));
            if (face.get() >= 0)
                ::posix_fadvise(face.get(), 0, 0, POSIX_FADV_WILLNEED);
        }
        FcPatternDestroy(match);
    }
    FcPatternDestroy(wanted);
}

} // namespace

// Fontconfig loads its configuration once per process, atomically: should Qt ask before this
// thread is done, it loads its own copy and one of the two is dropped. The faces are the
// screens' text and their bold, and the serif of the first screens' titles.
FontWarmUp::FontWarmUp()
    : m_thread([] {
          FcInit();
          for (const char* pattern : {"sans-serif", "sans-serif:bold", "serif:bold"})
              prefetchFaceFor(pattern);
      }) {}

FontWarmUp::~FontWarmUp() { m_thread.join(); }

} // namespace platform
