#pragma once

#include "TestHttpServer.h"
#include "base/MsgBox.h"
#include "shell/TLMain.h"
#include <memory>

// Points the program at a fresh stub HTTP server with a fresh gateway, and keeps every message
// box the program shows (answered OK) in boxes, starting empty.
inline void PointAtFreshStub(std::unique_ptr<TestHttpServer>& server, QList<MsgBoxCall>& boxes) {
    server = std::make_unique<TestHttpServer>();
    TLMain().Settings().SetWebAddress(server->baseUrl());
    TLMain().SetDataAccess(nullptr);
    boxes.clear();
    SetMsgBoxHook([&boxes](const MsgBoxCall& call) {
        boxes << call;
        return int(vb::vbOK);
    });
}
