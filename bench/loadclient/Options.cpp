#include "Options.h"

#include <cctype>
#include <functional>
#include <iostream>
#include <map>
#include <stdexcept>

namespace load {

namespace {

constexpr const char* kUsage =
    "usage: bench_load --url http://HOST:PORT [--clients 100] [--period 3] [--duration 60]\n"
    "         [--changes-per-second 0] [--boards-per-second 0] [--idle 0] [--trickle 0]\n"
    "         [--first-user pat0] [--password demo] [--sign-in-concurrency 4]\n"
    "         [--sign-in-limit 900] [--timeout 30] [--server-pid PID] [--probe-log FILE]\n"
    "         [--started-file FILE] [--seed 1] [--fresh-connections]\n";

// "http://HOST:PORT" (the path, if any, is ignored: the gateway's is fixed).
void setUrl(Options& o, const std::string& url) {
    const std::string scheme = "http://";
    if (url.rfind(scheme, 0) != 0)
        throw std::invalid_argument("only http:// addresses: " + url);
    std::string rest = url.substr(scheme.size());
    rest = rest.substr(0, rest.find('/'));
    const auto colon = rest.rfind(':');
    o.host = rest.substr(0, colon);
    o.port = colon == std::string::npos ? "80" : rest.substr(colon + 1);
}

// "pat0", "pat100" or "pat" (from 0).
void setFirstUser(Options& o, const std::string& name) {
    std::size_t digits = name.size();
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(name[digits - 1])))
        --digits;
    o.userPrefix = name.substr(0, digits);
    o.firstUser = digits == name.size() ? 0 : std::stoi(name.substr(digits));
}

using Setter = std::function<void(Options&, const std::string&)>;

const std::map<std::string, Setter>& setters() {
    static const std::map<std::string, Setter> table = {
        {"--url", setUrl},
        {"--clients", [](Options& o, const std::string& v) { o.clients = std::stoi(v); }},
        {"--period", [](Options& o, const std::string& v) { o.period = std::stod(v); }},
        {"--duration", [](Options& o, const std::string& v) { o.duration = std::stod(v); }},
        {"--changes-per-second",
         [](Options& o, const std::string& v) { o.changesPerSecond = std::stod(v); }},
        {"--boards-per-second",
         [](Options& o, const std::string& v) { o.boardsPerSecond = std::stod(v); }},
        {"--idle", [](Options& o, const std::string& v) { o.idle = std::stoi(v); }},
        {"--trickle", [](Options& o, const std::string& v) { o.trickle = std::stoi(v); }},
        {"--first-user", setFirstUser},
        {"--password", [](Options& o, const std::string& v) { o.password = v; }},
        {"--sign-in-concurrency",
         [](Options& o, const std::string& v) { o.signInConcurrency = std::stoi(v); }},
        {"--sign-in-limit", [](Options& o, const std::string& v) { o.signInLimit = std::stod(v); }},
        {"--timeout", [](Options& o, const std::string& v) { o.timeout = std::stod(v); }},
        {"--server-pid", [](Options& o, const std::string& v) { o.serverPid = std::stoi(v); }},
        {"--probe-log", [](Options& o, const std::string& v) { o.probeLog = v; }},
        {"--started-file", [](Options& o, const std::string& v) { o.startedFile = v; }},
        {"--seed", [](Options& o, const std::string& v) { o.seed = unsigned(std::stoul(v)); }},
    };
    return table;
}

void check(const Options& o, bool urlGiven) {
    if (!urlGiven)
        throw std::invalid_argument("--url is needed");
    if (o.clients < 1 || o.period <= 0 || o.duration <= 0 || o.timeout <= 0)
        throw std::invalid_argument("--clients, --period, --duration and --timeout must be > 0");
    if (o.changesPerSecond < 0 || o.boardsPerSecond < 0 || o.idle < 0 || o.trickle < 0 ||
        o.signInConcurrency < 1)
        throw std::invalid_argument("rates and counts can't be negative");
}

} // namespace

std::optional<Options> parseOptions(int argc, char** argv) {
    Options options;
    bool urlGiven = false;
    try {
        for (int i = 1; i < argc; ++i) {
            const std::string name = argv[i];
            if (name == "--help" || name == "-h") {
                std::cout << kUsage;
                return std::nullopt;
            }
            if (name == "--fresh-connections") {
                options.freshConnections = true;
                continue;
            }
            const auto setter = setters().find(name);
            if (setter == setters().end() || i + 1 >= argc)
                throw std::invalid_argument("unknown option or missing value: " + name);
            setter->second(options, argv[++i]);
            urlGiven = urlGiven || name == "--url";
        }
        check(options, urlGiven);
    } catch (const std::exception& e) {
        std::cerr << "bench_load: " << e.what() << '\n' << kUsage;
        return std::nullopt;
    }
    return options;
}

} // namespace load
