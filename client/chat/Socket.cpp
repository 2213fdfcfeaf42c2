#include "chat/Socket.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QScopedValueRollback>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <functional>
#include <mutex>
#include <poll.h>
#include <strophe.h>
#include <utility>

Q_LOGGING_CATEGORY(lcChatSocket, "tavlo.chat.socket", QtWarningMsg)

namespace {

constexpr long kRejectedNumber = 10061;
constexpr long kNotConnectedNumber = 10057;
constexpr long kMessageNumber = 503;
constexpr long kRegistrationNumber = 409;

constexpr int kIdleRounds = 4; // a round reads at most 4 KiB; TLS may hold a 16 KiB record
constexpr int kMaxRounds = 256;
constexpr int kFeaturesTimeoutMs = 10000;
constexpr const char* kRegisterId = "register1";

QString rejectedText() {
    return QStringLiteral("Connection is forcefully rejected");
}

QString notConnectedText() {
    return QStringLiteral("Not Connected");
}

// The text inside a child element; empty when there is none.
QString childText(xmpp_stanza_t* stanza, const char* name) {
    xmpp_stanza_t* child = xmpp_stanza_get_child_by_name(stanza, name);
    if (!child)
        return {};
    char* raw = xmpp_stanza_get_text(child);
    const QString text = QString::fromUtf8(raw);
    xmpp_free(xmpp_stanza_get_context(stanza), raw);
    return text;
}

// Adds <name>value</name> to parent.
void addTextChild(xmpp_stanza_t* parent, const char* name, const QByteArray& value) {
    xmpp_ctx_t* ctx = xmpp_stanza_get_context(parent);
    xmpp_stanza_t* element = xmpp_stanza_new(ctx);
    xmpp_stanza_set_name(element, name);
    xmpp_stanza_t* text = xmpp_stanza_new(ctx);
    xmpp_stanza_set_text(text, value.constData());
    xmpp_stanza_add_child(element, text);
    xmpp_stanza_release(text);
    xmpp_stanza_add_child(parent, element);
    xmpp_stanza_release(element);
}

// The name of the condition inside an <error/>, with its text if the server gave one.
QString errorCondition(xmpp_stanza_t* stanza) {
    xmpp_stanza_t* error = xmpp_stanza_get_child_by_name(stanza, "error");
    if (!error)
        return QStringLiteral("no reason given");
    QString condition;
    for (xmpp_stanza_t* c = xmpp_stanza_get_children(error); c; c = xmpp_stanza_get_next(c)) {
        const char* name = xmpp_stanza_get_name(c);
        if (name && qstrcmp(name, "text") != 0 && xmpp_stanza_is_tag(c))
            condition = QString::fromUtf8(name);
    }
    const QString text = childText(error, "text");
    return text.isEmpty() ? condition : condition + QStringLiteral(" (") + text + u')';
}

// The library's own resolver blocks, so it is handed an address. IPv4 comes first: a server
// on a name that resolves both ways often listens on IPv4 only.
QByteArray addressOf(const QString& host) {
    const QList<QHostAddress> all = QHostInfo::fromName(host).addresses();
    for (const QHostAddress& a : all) {
        if (a.protocol() == QAbstractSocket::IPv4Protocol)
            return a.toString().toLatin1();
    }
    return all.isEmpty() ? QByteArray() : all.first().toString().toLatin1();
}

bool isSignInRefusal(const QByteArray& xml) {
    return xml.startsWith("<failure") && xml.contains("urn:ietf:params:xml:ns:xmpp-sasl") &&
           xml.contains("not-authorized");
}

} // namespace

struct Socket::Impl {
    // What the event loop does once the library hands control back.
    enum class Step { None, SignIn, Drop };

    Socket* q;
    xmpp_log_t log{};
    xmpp_ctx_t* ctx = nullptr;
    xmpp_conn_t* conn = nullptr;

    QByteArray domain, address, user, password, resource;
    unsigned short port = 0;

    bool registering = false; // conn is the raw connection that registers the account
    bool tcpUp = false;       // bytes have crossed the wire on conn
    bool sessionUp = false;
    bool ending = false; // the connection is being ended on purpose: its end raises nothing
    Step next = Step::None;
    int fd = -1;
    int activity = 0; // bumped by every library callback, to tell a busy round from an idle one

    QPointer<QSocketNotifier> reader, writer;
    QTimer kick, housekeeping;
    std::deque<std::function<void()>> pending;

    // The socket whose library call is under way: the socket-option callback carries no
    // user data of its own.
    static thread_local Impl* active;

    explicit Impl(Socket* owner) : q(owner) {
        static std::once_flag once;
        std::call_once(once, [] { xmpp_initialize(); });
        log.handler = &Impl::onLog;
        log.userdata = this;
        ctx = xmpp_ctx_new(nullptr, &log);
        kick.setSingleShot(true);
        kick.setInterval(0);
        housekeeping.setInterval(1000);
        QObject::connect(&kick, &QTimer::timeout, q, [this] { pump(); });
        QObject::connect(&housekeeping, &QTimer::timeout, q, [this] { pump(); });
    }

    ~Impl() {
        drop();
        xmpp_ctx_free(ctx);
    }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // --- Starting and ending connections ---

    void start(bool newAccount) {
        address = addressOf(QString::fromUtf8(domain));
        if (address.isEmpty()) {
            post([q = q] { emit q->Error(kRejectedNumber, rejectedText()); });
            kick.start();
            return;
        }
        open(newAccount);
    }

    void open(bool raw) {
        conn = xmpp_conn_new(ctx);
        registering = raw;
        xmpp_conn_set_sockopt_callback(conn, &Impl::onSocket);
        int rc;
        {
            QScopedValueRollback<Impl*> scope(active, this);
            if (raw) {
                xmpp_conn_set_jid(conn, domain.constData());
                rc = xmpp_connect_raw(conn, address.constData(), port, &Impl::onConnection, this);
            } else {
                const QByteArray jid = user + '@' + domain + '/' + resource;
                xmpp_conn_set_jid(conn, jid.constData());
                xmpp_conn_set_pass(conn, password.constData());
                rc =
                    xmpp_connect_client(conn, address.constData(), port, &Impl::onConnection, this);
            }
        }
        if (rc != XMPP_EOK) {
            drop();
            post([q = q] { emit q->Error(kRejectedNumber, rejectedText()); });
        } else {
            housekeeping.start();
        }
        kick.start();
    }

    // Ends the connection without raising anything.
    void drop() {
        unwatch();
        housekeeping.stop();
        if (xmpp_conn_t* old = std::exchange(conn, nullptr))
            xmpp_conn_release(old); // its disconnect event no longer matches conn
        registering = tcpUp = sessionUp = ending = false;
        next = Step::None;
    }

    // --- Driving the library from the event loop ---

    void pump() {
        if (!conn && pending.empty())
            return;
        run();
        flush();
    }

    // Lets the library work until a few rounds in a row find nothing to do.
    void run() {
        QScopedValueRollback<Impl*> scope(active, this);
        int idle = 0;
        for (int round = 0; conn && round < kMaxRounds && idle < kIdleRounds; ++round) {
            const int before = activity;
            xmpp_run_once(ctx, 0);
            takeStep();
            idle = (activity == before && !readable()) ? idle + 1 : 0;
        }
        updateWriter();
    }

    void takeStep() {
        switch (std::exchange(next, Step::None)) {
        case Step::SignIn:
            drop();
            open(false);
            break;
        case Step::Drop:
            drop();
            break;
        case Step::None:
            break;
        }
    }

    bool readable() const {
        if (fd < 0)
            return false;
        pollfd p{fd, POLLIN, 0};
        return ::poll(&p, 1, 0) > 0 && (p.revents & POLLIN);
    }

    // Raises the queued events in order. A handler may connect anew (queueing more, which
    // this loop raises too) or delete the socket, which ends the loop.
    void flush() {
        QPointer<Socket> alive(q);
        while (alive && !pending.empty()) {
            std::function<void()> raise = std::move(pending.front());
            pending.pop_front();
            raise();
        }
    }

    void post(std::function<void()> raise) { pending.push_back(std::move(raise)); }

    void postXml(long direction, const QString& xml) {
        post([q = q, direction, xml] { emit q->XML(direction, xml); });
    }

    // --- Watching the descriptor ---

    void watch(int descriptor) {
        unwatch();
        fd = descriptor;
        reader = new QSocketNotifier(fd, QSocketNotifier::Read, q);
        writer = new QSocketNotifier(fd, QSocketNotifier::Write, q);
        QObject::connect(reader, &QSocketNotifier::activated, q, [this] { pump(); });
        QObject::connect(writer, &QSocketNotifier::activated, q, [this] { pump(); });
    }

    // Called before the library closes the descriptor, or right after from its disconnect
    // event, so the event loop never polls a closed (or reused) descriptor.
    void unwatch() {
        for (QSocketNotifier* n : {reader.data(), writer.data()}) {
            if (n) {
                n->setEnabled(false);
                n->deleteLater();
            }
        }
        reader = writer = nullptr;
        fd = -1;
    }

    // Writable matters only while the connect is under way or output waits.
    void updateWriter() {
        if (writer)
            writer->setEnabled(conn && (!tcpUp || xmpp_conn_send_queue_len(conn) > 0));
    }

    // --- Library callbacks ---

    static int onSocket(xmpp_conn_t* c, void* sock) {
        if (active && c == active->conn)
            active->watch(*static_cast<int*>(sock));
        return 0;
    }

    static void onLog(void* self, xmpp_log_level_t level, const char* area, const char* msg) {
        static_cast<Impl*>(self)->logLine(level, area, msg);
    }

    void logLine(xmpp_log_level_t level, const char* area, const char* msg) {
        ++activity;
        const QByteArray line(msg);
        if (line.startsWith("RECV: ")) {
            received(line.mid(6));
        } else if (line.startsWith("SENT: ")) {
            tcpUp = true;
            postXml(1, QString::fromUtf8(line.mid(6)));
        } else if (level >= XMPP_LEVEL_WARN && !ending) { // not the fallout of our own ending
            qCWarning(lcChatSocket, "%s: %s", area, msg);
        } else {
            qCDebug(lcChatSocket, "%s: %s", area, msg);
        }
    }

    void received(const QByteArray& xml) {
        tcpUp = true;
        postXml(0, QString::fromUtf8(xml));
        if (!registering && !ending && isSignInRefusal(xml)) {
            // The library would try its next mechanism; the program wants the refusal once.
            ending = true;
            next = Step::Drop;
            postXml(0, QStringLiteral("<error code='401'>Unauthorized</error>"));
        }
    }

    static void onConnection(xmpp_conn_t* c, xmpp_conn_event_t event, int error,
                             xmpp_stream_error_t*, void* self) {
        auto* d = static_cast<Impl*>(self);
        ++d->activity;
        if (c == d->conn)
            d->connectionEvent(event, error);
    }

    void connectionEvent(xmpp_conn_event_t event, int error) {
        switch (event) {
        case XMPP_CONN_RAW_CONNECT:
            tcpUp = true;
            xmpp_conn_open_stream_default(conn);
            break;
        case XMPP_CONN_CONNECT:
            tcpUp = true;
            if (registering)
                awaitFeatures();
            else
                signedIn();
            break;
        default:
            lost(error);
            break;
        }
    }

    void lost(int error) {
        unwatch(); // the library has closed the descriptor
        const bool wasUp = tcpUp;
        sessionUp = false;
        next = Step::Drop;
        if (ending)
            return;
        ending = true;
        qCDebug(lcChatSocket, "connection ended, error %d", error);
        if (wasUp)
            post([q = q] { emit q->Error(kNotConnectedNumber, notConnectedText()); });
        else
            post([q = q] { emit q->Error(kRejectedNumber, rejectedText()); });
    }

    void signedIn() {
        sessionUp = true;
        xmpp_handler_add(conn, &Impl::onMessage, nullptr, "message", nullptr, this);
        xmpp_handler_add(conn, &Impl::onPresence, nullptr, "presence", nullptr, this);
        xmpp_stanza_t* presence = xmpp_presence_new(ctx);
        xmpp_send(conn, presence);
        xmpp_stanza_release(presence);
        post([q = q] { emit q->Authenticated(); });
    }

    static int onMessage(xmpp_conn_t*, xmpp_stanza_t* stanza, void* self) {
        static_cast<Impl*>(self)->message(stanza);
        return 1;
    }

    void message(xmpp_stanza_t* stanza) {
        const QByteArray type = xmpp_stanza_get_type(stanza);
        if (type == "error") {
            post([q = q] {
                emit q->Error(kMessageNumber, QStringLiteral("Error sending message"));
            });
            return;
        }
        const bool chat = type.isEmpty() || type == "chat" || type == "normal";
        if (!chat || !xmpp_stanza_get_child_by_name(stanza, "body"))
            return;
        const QString from = QString::fromUtf8(xmpp_stanza_get_from(stanza));
        const QString body = childText(stanza, "body");
        const QString subject = childText(stanza, "subject");
        post([q = q, from, body, subject] { emit q->Chat(from, {}, body, subject, {}, {}, {}); });
    }

    static int onPresence(xmpp_conn_t*, xmpp_stanza_t* stanza, void* self) {
        auto* d = static_cast<Impl*>(self);
        const QString from = QString::fromUtf8(xmpp_stanza_get_from(stanza));
        const QString status = childText(stanza, "status");
        d->post([q = d->q, from, status] { emit q->Presence(from, 0, status, {}); });
        return 1;
    }

    // --- Registering the account on a raw connection ---

    void awaitFeatures() {
        xmpp_handler_add(conn, &Impl::onFeatures, XMPP_NS_STREAMS, "features", nullptr, this);
        xmpp_timed_handler_add(conn, &Impl::onFeaturesMissing, kFeaturesTimeoutMs, this);
    }

    static int onFeatures(xmpp_conn_t* c, xmpp_stanza_t* stanza, void* self) {
        auto* d = static_cast<Impl*>(self);
        xmpp_timed_handler_delete(c, &Impl::onFeaturesMissing);
        if (xmpp_stanza_get_child_by_name_and_ns(stanza, "starttls", XMPP_NS_TLS) &&
            !xmpp_conn_is_secured(c))
            d->startTls();
        else
            d->sendRegistration();
        return 0;
    }

    static int onFeaturesMissing(xmpp_conn_t*, void* self) {
        static_cast<Impl*>(self)->registrationFailed(
            QStringLiteral("Registration failed: the server sent no stream features"));
        return 0;
    }

    void startTls() {
        xmpp_stanza_t* starttls = xmpp_stanza_new(ctx);
        xmpp_stanza_set_name(starttls, "starttls");
        xmpp_stanza_set_ns(starttls, XMPP_NS_TLS);
        xmpp_handler_add(conn, &Impl::onTlsAnswer, XMPP_NS_TLS, nullptr, nullptr, this);
        xmpp_send(conn, starttls);
        xmpp_stanza_release(starttls);
    }

    static int onTlsAnswer(xmpp_conn_t* c, xmpp_stanza_t* stanza, void* self) {
        auto* d = static_cast<Impl*>(self);
        if (qstrcmp(xmpp_stanza_get_name(stanza), "proceed") == 0 && xmpp_conn_tls_start(c) == 0)
            xmpp_conn_open_stream_default(c); // the server's features come again, secured
        else
            d->registrationFailed(QStringLiteral("Registration failed: TLS could not start"));
        return 0;
    }

    void sendRegistration() {
        xmpp_stanza_t* iq = xmpp_iq_new(ctx, "set", kRegisterId);
        xmpp_stanza_set_to(iq, domain.constData());
        xmpp_stanza_t* query = xmpp_stanza_new(ctx);
        xmpp_stanza_set_name(query, "query");
        xmpp_stanza_set_ns(query, XMPP_NS_REGISTER);
        addTextChild(query, "username", user);
        addTextChild(query, "password", password);
        xmpp_stanza_add_child(iq, query);
        xmpp_stanza_release(query);
        xmpp_id_handler_add(conn, &Impl::onRegistered, kRegisterId, this);
        xmpp_send(conn, iq);
        xmpp_stanza_release(iq);
    }

    // A new account or one that exists already: either way the user signs in next, on a
    // fresh connection, since a raw connection cannot sign in.
    static int onRegistered(xmpp_conn_t*, xmpp_stanza_t* stanza, void* self) {
        auto* d = static_cast<Impl*>(self);
        const QByteArray type = xmpp_stanza_get_type(stanza);
        xmpp_stanza_t* error = xmpp_stanza_get_child_by_name(stanza, "error");
        if (type == "result" || (error && xmpp_stanza_get_child_by_name(error, "conflict")))
            d->next = Step::SignIn;
        else
            d->registrationFailed(QStringLiteral("Registration refused: ") +
                                  errorCondition(stanza));
        return 0;
    }

    void registrationFailed(const QString& text) {
        if (ending)
            return;
        ending = true;
        next = Step::Drop;
        post([q = q, text] { emit q->Error(kRegistrationNumber, text); });
    }
};

thread_local Socket::Impl* Socket::Impl::active = nullptr;

Socket::Socket(QObject* parent) : QObject(parent), d(std::make_unique<Impl>(this)) {}

Socket::~Socket() = default;

long Socket::Connect(const QString& server, long port, const QString& user, const QString& password,
                     const QString& resource, long, long, bool newAccount) {
    d->drop();
    d->domain = server.toUtf8();
    d->port = static_cast<unsigned short>(port);
    d->user = user.toUtf8();
    d->password = password.toUtf8();
    d->resource = resource.toUtf8();
    d->start(newAccount);
    return 0;
}

long Socket::SendMessage(const QString& jid, const QString&, const QString& text, bool,
                         const QString&, const QString&) {
    if (!IsConnected()) {
        d->post([this] { emit Error(kNotConnectedNumber, notConnectedText()); });
    } else {
        const QByteArray to = jid.toUtf8();
        char* id = xmpp_uuid_gen(d->ctx);
        xmpp_stanza_t* message = xmpp_message_new(d->ctx, "chat", to.constData(), id);
        xmpp_message_set_body(message, text.toUtf8().constData());
        xmpp_send(d->conn, message);
        xmpp_stanza_release(message);
        xmpp_free(d->ctx, id);
    }
    d->kick.start();
    return 0;
}

bool Socket::IsConnected() const {
    return d->conn && d->sessionUp && xmpp_conn_is_connected(d->conn);
}
