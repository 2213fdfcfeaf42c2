#pragma once

#include "HttpLimits.h"
#include "HttpReply.h"
#include "HttpRequest.h"
#include <functional>
#include <memory>
#include <string>

// The server's HTTP/1.1 front: a few threads do all socket work without blocking, so idle
// keep-alive connections and slow senders cost a file handle each and nothing more; whole
// requests go to a bounded pool of workers that run the handler (which may block on the
// database). Limits in HttpLimits.
class HttpFront {
public:
    using Handler = std::function<HttpReply(const HttpRequest&)>;

    // onWorkerStart runs first on each worker thread.
    explicit HttpFront(Handler handler, HttpLimits limits = {},
                       std::function<void()> onWorkerStart = {});
    ~HttpFront();
    HttpFront(const HttpFront&) = delete;
    HttpFront& operator=(const HttpFront&) = delete;

    // Binds and listens (port 0 picks a free one); false with a reason on failure.
    bool Bind(const std::string& host, int port, std::string* error);
    int Port() const;
    // Serves until Stop(), SIGINT or SIGTERM; the workers finish what they hold first.
    void Run();
    void Stop(); // from any thread

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
