#include "SignInPhase.h"

#include "HttpRequests.h"
#include <iostream>

namespace load {

using Clock = std::chrono::steady_clock;

namespace {

constexpr int kGiveUpAfter = 10; // failures in a row
constexpr auto kSignInTimeout = std::chrono::seconds(60);

// The whole number after NAME=' (or NAME=") in the first row of an XML rowset; 0 if none.
long attribute(const std::string& xml, const std::string& name) {
    const auto at = xml.find(' ' + name + '=');
    if (at == std::string::npos)
        return 0;
    const std::size_t digits = at + name.size() + 3;
    return digits < xml.size() ? std::strtol(xml.c_str() + digits, nullptr, 10) : 0;
}

} // namespace

SignInPhase::SignInPhase(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                         const Options& options)
    : io_(io), options_(options), workers_(std::size_t(options.signInConcurrency)) {
    for (auto& worker : workers_)
        worker.connection = std::make_unique<HttpConnection>(io, server, opened_);
}

std::vector<Identity> SignInPhase::run() {
    const auto started = Clock::now();
    deadline_ = started + std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(options_.signInLimit));
    for (auto& worker : workers_)
        next(worker);
    io_.run();
    io_.restart();
    for (auto& worker : workers_)
        worker.connection->close();
    report(std::chrono::duration<double>(Clock::now() - started).count());
    return std::move(signedIn_);
}

void SignInPhase::next(Worker& worker) {
    if (nextUser_ >= options_.clients || failuresInARow_ >= kGiveUpAfter ||
        Clock::now() >= deadline_)
        return;
    worker.user = options_.userPrefix + std::to_string(options_.firstUser + nextUser_++);
    worker.request =
        requests::statement(options_.hostHeader(), "",
                            "EXEC LoginCheck '" + worker.user + "','" + options_.password + "'");
    const auto left = std::min<Clock::duration>(kSignInTimeout, deadline_ - Clock::now());
    worker.connection->exchange(worker.request, left,
                                [this, &worker](Outcome outcome) { onAnswer(worker, outcome); });
}

// A good sign-in answers the user's row (ContactSys, UserSys) and sets the session cookie.
void SignInPhase::onAnswer(Worker& worker, const Outcome& outcome) {
    Identity who{worker.user, outcome.cookie, attribute(outcome.body, "ContactSys"),
                 attribute(outcome.body, "UserSys")};
    std::string failure = outcome.failure;
    if (failure.empty() && (who.cookie.empty() || who.contactSys == 0 || who.userSys == 0))
        failure = "no session";
    if (failure.empty()) {
        signedIn_.push_back(std::move(who));
        failuresInARow_ = 0;
        if (signedIn_.size() % 100 == 0)
            std::cerr << "signed in " << signedIn_.size() << " of " << options_.clients << '\n';
    } else {
        ++failures_[failure];
        ++failuresInARow_;
    }
    next(worker);
}

void SignInPhase::report(double seconds) const {
    std::cout << "signed in " << signedIn_.size() << " of " << options_.clients << " users in "
              << seconds << " s (not part of the timed run)";
    for (const auto& [name, count] : failures_)
        std::cout << "; failed: " << name << ' ' << count;
    if (failuresInARow_ >= kGiveUpAfter)
        std::cout << "; gave up after " << kGiveUpAfter << " failures in a row";
    else if (nextUser_ < options_.clients)
        std::cout << "; gave up: out of time";
    std::cout << '\n';
}

} // namespace load
