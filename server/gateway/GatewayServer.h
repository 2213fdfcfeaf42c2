#pragma once

#include <QString>
#include <memory>

class Database;

// The HTTP side of the server: POST /XMLDemo.asp runs one catalogue statement, /healthz
// answers load balancers, /reset sets a new password from a recovery link, and /pictures/
// serves the contact pictures. Always tuned: no delayed small answers, a long listen queue,
// bounded bodies and time-outs, a pool of workers.
class GatewayServer {
public:
    explicit GatewayServer(Database& db);
    ~GatewayServer();

    // Binds (port 0 picks a free one); false with a reason on failure.
    bool Bind(const QString& host, int port, QString* error);
    int Port() const;
    // Serves until Stop() is called from another thread.
    void Run();
    void Stop();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
