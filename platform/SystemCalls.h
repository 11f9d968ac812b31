#pragma once

// The calls that decide whether copied data is safely on disk. File code calls them through
// these pointers so that a test can make one fail on cue, or see what it was given, the way
// a failing disk or a FUSE server would; the app itself never changes them.
namespace platform::sys {

extern int (*close)(int fd);
extern int (*syncfs)(int fd);

} // namespace platform::sys
