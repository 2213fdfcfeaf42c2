#include "ProsodyServer.h"
#include "chat/Socket.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

namespace {

constexpr int kWait = 10000;
const QString kUnauthorized = QStringLiteral("<error code='401'>Unauthorized</error>");

// How many XML events in the direction carried the given text.
int xmlCount(const QSignalSpy& spy, long direction, const QString& part) {
    int n = 0;
    for (const QList<QVariant>& args : spy)
        n += args.at(0).toLongLong() == direction && args.at(1).toString().contains(part);
    return n;
}

QString lastError(const QSignalSpy& spy) {
    return spy.isEmpty() ? QString() : spy.last().at(1).toString();
}

} // namespace

// The chat connection against a real Prosody.
class TestChatSocket : public QObject {
    Q_OBJECT
    std::unique_ptr<ProsodyServer> chat;

    // Signs in the way the program does: a refused sign-in registers the account and retries.
    void signIn(Socket& s, const ProsodyServer& server, const QString& user) {
        connect(&s, &Socket::XML, &s, [&s, &server, user](long, const QString& xml) {
            if (xml == kUnauthorized)
                s.Connect(server.host(), server.port(), user, "pw-" + user, "Desk", 1, 2, true);
        });
        QSignalSpy authenticated(&s, &Socket::Authenticated);
        s.Connect(server.host(), server.port(), user, "pw-" + user, "Desk", 1, 2, false);
        QTRY_COMPARE_WITH_TIMEOUT(authenticated.count(), 1, kWait);
        QVERIFY(s.IsConnected());
    }

private slots:
    void initTestCase() {
        chat = std::make_unique<ProsodyServer>();
        QVERIFY2(chat->started(), qPrintable(chat->failure()));
        QCOMPARE(chat->chatServerSetting(), "localhost:" + QString::number(chat->port()));
    }

    void firstSignInRegistersThenSignsInDirectly() {
        Socket s;
        QSignalSpy xml(&s, &Socket::XML);
        QSignalSpy errors(&s, &Socket::Error);
        QSignalSpy presence(&s, &Socket::Presence);
        signIn(s, *chat, QStringLiteral("ann"));
        QTRY_VERIFY_WITH_TIMEOUT(!presence.isEmpty(), kWait); // the server reflects our own
        QCOMPARE(presence[0][0].toString(), QStringLiteral("ann@localhost/Desk"));
        QCOMPARE(xmlCount(xml, 0, kUnauthorized), 1);
        QCOMPARE(xmlCount(xml, 1, QStringLiteral("jabber:iq:register")), 1);

        // Connecting the live socket again drops the old session quietly.
        xml.clear();
        QSignalSpy authenticated(&s, &Socket::Authenticated);
        s.Connect(chat->host(), chat->port(), "ann", "pw-ann", "Desk", 1, 2, false);
        QTRY_COMPARE_WITH_TIMEOUT(authenticated.count(), 1, kWait);
        QCOMPARE(xmlCount(xml, 0, kUnauthorized), 0);
        QCOMPARE(xmlCount(xml, 1, QStringLiteral("<presence/>")), 1);
        QVERIFY2(errors.isEmpty(), qPrintable(lastError(errors)));
    }

    // bob's account exists already, so his registration meets a conflict and signs in anyway.
    void messageCarriesSenderAndBody() {
        QVERIFY(chat->registerUser(QStringLiteral("bob"), QStringLiteral("pw-bob")));
        Socket ann, bob;
        signIn(ann, *chat, QStringLiteral("ann"));
        signIn(bob, *chat, QStringLiteral("bob"));
        QSignalSpy sent(&ann, &Socket::XML);
        QSignalSpy received(&bob, &Socket::XML);
        QSignalSpy chats(&bob, &Socket::Chat);
        ann.SendMessage(QStringLiteral("bob@localhost/Desk"), {}, QStringLiteral("hi & <bye>"));
        QTRY_COMPARE_WITH_TIMEOUT(chats.count(), 1, kWait);
        QCOMPARE(chats[0][0].toString(), QStringLiteral("ann@localhost/Desk"));
        QCOMPARE(chats[0][2].toString(), QStringLiteral("hi & <bye>"));
        QCOMPARE(xmlCount(sent, 1, QStringLiteral("hi &amp; &lt;bye&gt;")), 1);
        QCOMPARE(xmlCount(received, 0, QStringLiteral("hi &amp; &lt;bye&gt;")), 1);
    }

    void messageToUnknownUserFails() {
        Socket s;
        signIn(s, *chat, QStringLiteral("carl"));
        QSignalSpy errors(&s, &Socket::Error);
        s.SendMessage(QStringLiteral("nobody@localhost/Desk"), {}, QStringLiteral("anyone?"));
        QTRY_COMPARE_WITH_TIMEOUT(lastError(errors), QStringLiteral("Error sending message"),
                                  kWait);
        QVERIFY(s.IsConnected());
    }

    void closedPortIsRejected() {
        quint16 port;
        {
            QTcpServer probe;
            QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
            port = probe.serverPort();
        }
        Socket s;
        QSignalSpy errors(&s, &Socket::Error);
        s.Connect(QStringLiteral("localhost"), port, "ann", "pw-ann", "Desk", 1, 2, false);
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), 1, kWait);
        QCOMPARE(lastError(errors), QStringLiteral("Connection is forcefully rejected"));
        QVERIFY(!s.IsConnected());
    }

    // A handler may delete the socket while more events wait; those are never raised.
    void sendingWhileNeverConnected() {
        QPointer<Socket> s = new Socket;
        QSignalSpy errors(s.data(), &Socket::Error);
        connect(s.data(), &Socket::Error, s.data(), [&s] { delete s.data(); });
        s->SendMessage(QStringLiteral("ann@localhost/Desk"), {}, QStringLiteral("one"));
        s->SendMessage(QStringLiteral("ann@localhost/Desk"), {}, QStringLiteral("two"));
        QTRY_VERIFY_WITH_TIMEOUT(s.isNull(), kWait);
        QCOMPARE(errors.count(), 1);
        QCOMPARE(lastError(errors), QStringLiteral("Not Connected"));
    }

    void serverGoingAwayDropsTheConnection() {
        ProsodyServer own;
        QVERIFY2(own.started(), qPrintable(own.failure()));
        Socket s;
        signIn(s, own, QStringLiteral("dora"));
        QSignalSpy errors(&s, &Socket::Error);
        own.stop();
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), 1, kWait);
        QCOMPARE(lastError(errors), QStringLiteral("Not Connected"));
        QVERIFY(!s.IsConnected());
        s.SendMessage(QStringLiteral("ann@localhost/Desk"), {}, QStringLiteral("still there?"));
        QTRY_COMPARE_WITH_TIMEOUT(errors.count(), 2, kWait);
        QCOMPARE(lastError(errors), QStringLiteral("Not Connected"));
    }
};

QTEST_GUILESS_MAIN(TestChatSocket)
#include "tst_chatsocket.moc"
