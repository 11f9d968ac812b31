#pragma once

#include <thread>

namespace platform {

// Reading the desktop's font configuration (a few milliseconds of XML) is the first thing any
// text on screen waits for. This reads it on another core while the window is being built;
// whoever asks later finds it read. Joined when it goes out of scope.
class FontWarmUp {
public:
    FontWarmUp();
    ~FontWarmUp();
    FontWarmUp(const FontWarmUp&) = delete;
    FontWarmUp& operator=(const FontWarmUp&) = delete;

private:
    std::thread m_thread;
};

} // namespace platform
