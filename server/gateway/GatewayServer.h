#pragma once

#include "HttpLimits.h"
#include <QString>
#include <QStringList>
#include <memory>

class Database;

struct GatewayOptions {
    HttpLimits limits;
    // Addresses (a reverse proxy on the same machine, say) whose X-Real-IP header names the
    // client; every other peer is taken as it is.
    QStringList trustedProxies;
    std::size_t cacheBytes = 64u << 20; // the answer cache's budget
};

// The server's routes: POST /XMLDemo.asp runs one catalogue statement, /healthz answers load
// balancers, the web sign-in, administration and sign-out pages, /reset sets a new password
// from a recovery link, /pictures/ serves the contact pictures, and the web board's page,
// files and JSON routes (webapp/) are added beside them.
class GatewayServer {
public:
    explicit GatewayServer(Database& db, GatewayOptions options = {});
    ~GatewayServer();

    // Binds (port 0 picks a free one); false with a reason on failure.
    bool Bind(const QString& host, int port, QString* error);
    int Port() const;
    // Serves until Stop() is called from another thread, or SIGINT or SIGTERM comes.
    void Run();
    void Stop();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
