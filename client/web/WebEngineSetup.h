#pragma once

// What the browser engine needs before the application object exists: a shared GL context,
// and, when the program runs as root (containers, kiosks), Chromium's sandbox switched off,
// since Chromium refuses to start sandboxed as root. The GPU stays off: the pages are plain.
void PrepareWebEngine();
