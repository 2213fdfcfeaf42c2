#include "update/FtpSession.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <curl/curl.h>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

Q_LOGGING_CATEGORY(lcFtpSession, "tavlo.update.ftp", QtWarningMsg)

namespace {

constexpr int kTickMs = 10;              // how often libcurl gets to work while an action runs
constexpr qint64 kProgressGapMs = 50;    // at most 20 Progress events a second
constexpr qsizetype kListingCap = 65536; // only the first line matters
constexpr long kBusyNumber = 10036;
constexpr long kNotConnectedNumber = 10057;

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};

// Cleaning up the multi handle closes the connections it holds, sending QUIT on each.
struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

// Host goes into the URL as it is, so it may hold a name, an address, a port and IPv6
// brackets but nothing that would end the host part early.
bool isValidHost(const QString& host) {
    if (host.isEmpty())
        return false;
    for (const QChar c : host) {
        if (!c.isLetterOrNumber() && !QStringLiteral(".-_:[]%").contains(c))
            return false;
    }
    return true;
}

// The directory a ChangeDirectory leads to: an absolute path replaces the current one, a
// relative one goes on from it, and an empty one goes back to where the login landed.
QString joinDirectory(const QString& current, const QString& path) {
    if (path.isEmpty() || path.startsWith(u'/') || current.isEmpty())
        return path;
    return current + u'/' + path;
}

// The URL path of a directory, ending in "/" unless it is the login directory. libcurl
// changes into it with one CWD; a leading "%2F" makes that CWD absolute.
QByteArray directoryPath(const QString& directory) {
    QByteArrayList parts;
    for (const QString& part : directory.split(u'/', Qt::SkipEmptyParts))
        parts << QUrl::toPercentEncoding(part);
    QByteArray path = directory.startsWith(u'/') ? QByteArrayLiteral("%2F") : QByteArray();
    path += parts.join('/');
    return path.isEmpty() ? path : path + '/';
}

QString firstLine(const QByteArray& text) {
    QByteArray line = text.left(text.indexOf('\n'));
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

} // namespace

struct FtpSession::Impl {
    enum class Action { None, Connect, ChangeDirectory, List, Get };

    FtpSession* q;
    std::unique_ptr<CURLM, MultiDeleter> multi;
    std::unique_ptr<CURL, EasyDeleter> easy; // declared after multi: it goes first
    Action running = Action::None;
    bool connected = false;

    QByteArray site, user, password; // as they were at Connect
    QString directory;               // where actions run
    QString wanted;                  // the directory ChangeDirectory is checking

    QByteArray listing;
    QFile file;
    qint64 received = 0;
    qint64 reported = -1;
    QElapsedTimer sinceProgress;
    char errorText[CURL_ERROR_SIZE] = {};

    QTimer tick;
    std::deque<std::function<void()>> pending;

    explicit Impl(FtpSession* owner) : q(owner) {
        static std::once_flag once;
        std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
        tick.setInterval(kTickMs);
        QObject::connect(&tick, &QTimer::timeout, q, [this] { onTick(); });
    }

    ~Impl() { close(); }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // --- Actions ---

    void connect() {
        if (refuseWhileBusy())
            return;
        close();
        const QString host = q->Host.trimmed();
        if (!isValidHost(host)) {
            post([q = q, host] { emit q->Error(CURLE_URL_MALFORMAT, "Bad host: " + host); });
            return;
        }
        site = host.toUtf8();
        user = q->User.toUtf8();
        password = q->Password.toUtf8();
        directory.clear();
        multi.reset(curl_multi_init());
        easy.reset(curl_easy_init());
        prepare(Action::Connect, url(QString()));
        curl_easy_setopt(easy.get(), CURLOPT_NOBODY, 1L);
        launch();
    }

    void changeDirectory(const QString& path) {
        if (refuseWhileBusy() || refuseUnlessConnected())
            return;
        wanted = joinDirectory(directory, path);
        prepare(Action::ChangeDirectory, url(wanted));
        curl_easy_setopt(easy.get(), CURLOPT_NOBODY, 1L);
        launch();
    }

    void listEntry(const QString& name) {
        if (refuseWhileBusy() || refuseUnlessConnected())
            return;
        if (name.contains(u'\r') || name.contains(u'\n')) {
            post([q = q] { emit q->Error(CURLE_URL_MALFORMAT, "Bad file name"); });
            return;
        }
        listing.clear();
        prepare(Action::List, url(directory));
        const QByteArray command = "LIST " + name.toUtf8();
        curl_easy_setopt(easy.get(), CURLOPT_CUSTOMREQUEST, command.constData()); // copied
        curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, &Impl::onListing);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, this);
        launch();
    }

    void getFile(const QString& localPath, const QString& remoteName) {
        if (refuseWhileBusy() || refuseUnlessConnected())
            return;
        file.setFileName(localPath);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            const QString text = "Cannot write " + localPath + ": " + file.errorString();
            post([q = q, text] { emit q->Error(CURLE_WRITE_ERROR, text); });
            return;
        }
        received = 0;
        reported = -1;
        sinceProgress.start();
        prepare(Action::Get, url(directory, remoteName));
        curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, &Impl::onData);
        curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, this);
        // A whole-transfer limit would cut a slow update short however steadily it moves, so
        // the transfer ends only when nothing at all arrives for Timeout seconds; commands
        // and the data connection still get Timeout each (see prepare).
        curl_easy_setopt(easy.get(), CURLOPT_TIMEOUT, 0L);
        curl_easy_setopt(easy.get(), CURLOPT_LOW_SPEED_LIMIT, 1L);
        curl_easy_setopt(easy.get(), CURLOPT_LOW_SPEED_TIME, seconds());
        launch();
    }

    void disconnect() {
        close();
        post([q = q] { emit q->Done(); });
    }

    // --- Starting an action ---

    bool refuseWhileBusy() {
        if (running == Action::None)
            return false;
        post([q = q] { emit q->Error(kBusyNumber, QStringLiteral("Busy")); });
        return true;
    }

    bool refuseUnlessConnected() {
        if (connected)
            return false;
        post([q = q] { emit q->Error(kNotConnectedNumber, QStringLiteral("Not connected")); });
        return true;
    }

    long seconds() const { return std::max(0L, q->Timeout); }

    QByteArray url(const QString& dir, const QString& fileName = {}) const {
        return "ftp://" + site + '/' + directoryPath(dir) + QUrl::toPercentEncoding(fileName);
    }

    // Sets every option an action needs from scratch; the connection itself survives the
    // reset, so the next action runs on it without logging in again.
    void prepare(Action action, const QByteArray& address) {
        CURL* e = easy.get();
        curl_easy_reset(e);
        running = action;
        errorText[0] = '\0';
        curl_easy_setopt(e, CURLOPT_URL, address.constData());
        curl_easy_setopt(e, CURLOPT_PROTOCOLS_STR, "ftp");
        curl_easy_setopt(e, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(e, CURLOPT_ERRORBUFFER, errorText);
        curl_easy_setopt(e, CURLOPT_VERBOSE, 1L); // feeds the debug callback
        curl_easy_setopt(e, CURLOPT_DEBUGFUNCTION, &Impl::onDebug);
        curl_easy_setopt(e, CURLOPT_DEBUGDATA, this);
        if (!user.isEmpty()) { // libcurl logs in as anonymous otherwise
            curl_easy_setopt(e, CURLOPT_USERNAME, user.constData());
            curl_easy_setopt(e, CURLOPT_PASSWORD, password.constData());
        }
        curl_easy_setopt(e, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_SINGLECWD));
        curl_easy_setopt(e, CURLOPT_TCP_KEEPALIVE, 1L); // the control line idles during a get
        curl_easy_setopt(e, CURLOPT_TIMEOUT, seconds());
        curl_easy_setopt(e, CURLOPT_CONNECTTIMEOUT, seconds());
        curl_easy_setopt(e, CURLOPT_SERVER_RESPONSE_TIMEOUT, seconds());
    }

    void launch() {
        curl_multi_add_handle(multi.get(), easy.get());
        tick.start();
    }

    // Stops a running action and drops the connection, all without raising anything.
    void close() {
        if (running != Action::None)
            curl_multi_remove_handle(multi.get(), easy.get());
        running = Action::None;
        connected = false;
        file.close();
        easy.reset();
        multi.reset();
    }

    // --- Driving libcurl from the event loop ---

    void onTick() {
        if (running != Action::None)
            perform();
        flush();
    }

    void perform() {
        int active = 0;
        curl_multi_perform(multi.get(), &active);
        if (running == Action::Get)
            reportProgress(false);
        int left = 0;
        while (CURLMsg* message = curl_multi_info_read(multi.get(), &left)) {
            if (message->msg == CURLMSG_DONE && message->easy_handle == easy.get()) {
                finish(message->data.result); // may close the multi handle
                return;
            }
        }
    }

    void finish(CURLcode code) {
        const Action action = std::exchange(running, Action::None);
        curl_multi_remove_handle(multi.get(), easy.get());
        long reply = 0;
        curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &reply);
        file.close();
        if (action == Action::List && code == CURLE_FTP_COULDNT_RETR_FILE && reply == 550)
            code = CURLE_OK; // no such file: the server refused to list it
        if (code != CURLE_OK)
            fail(code, reply);
        else
            succeed(action);
    }

    void succeed(Action action) {
        switch (action) {
        case Action::Connect:
            connected = true;
            post([q = q] { emit q->Connected(0); });
            return;
        case Action::ChangeDirectory:
            directory = wanted;
            break;
        case Action::List:
            post([q = q, entry = firstLine(listing)] { emit q->List(entry); });
            break;
        case Action::Get:
            reportProgress(true);
            break;
        case Action::None:
            return;
        }
        post([q = q] { emit q->Done(); });
    }

    // A failed action ends the session: what libcurl leaves of the connection may be
    // mid-command, and the program starts over with Connect anyway.
    void fail(CURLcode code, long reply) {
        const long number = reply >= 400 ? reply : static_cast<long>(code);
        const QString text =
            QString::fromUtf8(errorText[0] ? errorText : curl_easy_strerror(code)).trimmed();
        qCDebug(lcFtpSession) << "action failed:" << number << text;
        close();
        post([q = q, number, text] { emit q->Error(number, text); });
    }

    void reportProgress(bool final) {
        const bool due = final || sinceProgress.elapsed() >= kProgressGapMs;
        if (!due || received == reported || (received == 0 && !final))
            return;
        reported = received;
        sinceProgress.restart();
        post([q = q, bytes = received] { emit q->Progress(bytes); });
    }

    // Raises the queued events in order. A handler may start an action (queueing more, which
    // this loop raises too) or delete the session, which ends the loop.
    void flush() {
        QPointer<FtpSession> alive(q);
        while (alive && !pending.empty()) {
            std::function<void()> raise = std::move(pending.front());
            pending.pop_front();
            raise();
        }
        if (alive && running == Action::None && pending.empty())
            tick.stop(); // nothing to do until the next action
    }

    void post(std::function<void()> raise) {
        pending.push_back(std::move(raise));
        if (!tick.isActive())
            tick.start();
    }

    // --- libcurl callbacks: they only record and queue, never raise ---

    static size_t onListing(char* data, size_t size, size_t count, void* self) {
        auto* d = static_cast<Impl*>(self);
        const qsizetype room = kListingCap - d->listing.size();
        d->listing.append(data, std::min<qsizetype>(room, qsizetype(size * count)));
        return size * count;
    }

    static size_t onData(char* data, size_t size, size_t count, void* self) {
        auto* d = static_cast<Impl*>(self);
        const qint64 written = d->file.write(data, qint64(size * count));
        if (written < 0 || size_t(written) != size * count)
            return 0; // libcurl ends the transfer with a write error
        d->received += written;
        return size * count;
    }

    static int onDebug(CURL*, curl_infotype type, char* data, size_t size, void* self) {
        const QByteArray text(data, qsizetype(size));
        if (type == CURLINFO_HEADER_IN)
            static_cast<Impl*>(self)->replied(text);
        else if (type == CURLINFO_HEADER_OUT && !text.startsWith("PASS "))
            qCDebug(lcFtpSession) << "sent" << text.trimmed();
        return 0;
    }

    void replied(const QByteArray& text) {
        for (QByteArray line : text.split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            if (!line.isEmpty())
                post([q = q, line = QString::fromUtf8(line)] { emit q->Reply(line); });
        }
    }
};

FtpSession::FtpSession(QObject* parent) : QObject(parent), d(std::make_unique<Impl>(this)) {}

FtpSession::~FtpSession() = default;

int FtpSession::State() const {
    return d->connected ? 1 : 0;
}

void FtpSession::Connect() {
    d->connect();
}

void FtpSession::ChangeDirectory(const QString& path) {
    d->changeDirectory(path);
}

void FtpSession::ListEntry(const QString& fileName) {
    d->listEntry(fileName);
}

void FtpSession::GetFile(const QString& localPath, const QString& remoteName) {
    d->getFile(localPath, remoteName);
}

void FtpSession::Disconnect() {
    d->disconnect();
}
