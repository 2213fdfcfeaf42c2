#pragma once

#include "BoxRecorder.h"
#include "TestHttpServer.h"
#include "shell/TLMain.h"
#include "wire/FormEncoding.h"
#include <memory>

// Points the program at a fresh stub HTTP server with a fresh gateway, and keeps every message box
// the program shows (answered OK) in boxes, starting empty.
inline void PointAtFreshStub(std::unique_ptr<TestHttpServer>& server, BoxRecorder& boxes) {
    server = std::make_unique<TestHttpServer>();
    TLMain().Settings().SetWebAddress(server->baseUrl());
    TLMain().SetDataAccess(nullptr);
    boxes.install();
}

// The statements the stub was posted, oldest first, as the program wrote them.
inline QStringList PostedStatements(const TestHttpServer& server) {
    QStringList statements;
    for (const auto& request : server.requests())
        statements << wire::form::field(request.body, "strSQL").value_or(QString());
    return statements;
}
