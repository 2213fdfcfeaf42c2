#pragma once

#include "BoxRecorder.h"
#include "TestHttpServer.h"
#include "shell/TLMain.h"
#include <memory>

// Points the program at a fresh stub HTTP server with a fresh gateway, and keeps every message box
// the program shows (answered OK) in boxes, starting empty.
inline void PointAtFreshStub(std::unique_ptr<TestHttpServer>& server, BoxRecorder& boxes) {
    server = std::make_unique<TestHttpServer>();
    TLMain().Settings().SetWebAddress(server->baseUrl());
    TLMain().SetDataAccess(nullptr);
    boxes.install();
}
