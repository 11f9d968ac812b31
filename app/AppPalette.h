#pragma once

// Morvanta's own colours for the window and the standard controls: dark, like its screens,
// whatever the desktop's theme. The disguised screens that use "the window's colours" use
// these.
void applyAppPalette();
