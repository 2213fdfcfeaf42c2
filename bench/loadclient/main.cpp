// bench_load: simulated tray clients against a running tavlo-server (see bench/load).
#include "LoadRun.h"
#include "Options.h"
#include "SignInPhase.h"
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <iomanip>
#include <iostream>
#include <sys/resource.h>

namespace {

// A thousand clients and the slow connections need more descriptors than the usual 1,024.
void raiseOpenFileLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

int main(int argc, char** argv) {
    const auto options = load::parseOptions(argc, argv);
    if (!options)
        return 2;
    raiseOpenFileLimit();
    std::cout << std::fixed << std::setprecision(1);
    boost::asio::io_context io(1);
    boost::asio::ip::tcp::endpoint server;
    try {
        boost::asio::ip::tcp::resolver resolver(io);
        server = resolver.resolve(options->host, options->port)->endpoint();
    } catch (const std::exception& e) {
        std::cerr << "bench_load: can't resolve " << options->hostHeader() << ": " << e.what()
                  << '\n';
        return 2;
    }
    std::vector<load::Identity> users = load::SignInPhase(io, server, *options).run();
    if (users.empty()) {
        std::cout << "no user signed in: no timed run\n";
        return 1;
    }
    load::LoadRun run(io, server, *options, std::move(users));
    run.run();
    run.print(std::cout);
    return 0;
}
