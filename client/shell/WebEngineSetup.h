#pragma once

// What the embedded browser needs before the application object exists: a shared GL context,
// and, when the program runs as root (containers, kiosks), Chromium's sandbox switched off,
// since Chromium refuses to start sandboxed as root.
void PrepareWebEngine();
