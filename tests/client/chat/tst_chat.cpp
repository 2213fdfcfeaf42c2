#include "FakeNetwork.h"
#include "ProsodyServer.h"
#include "Rows.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "chat/Socket.h"
#include "chat/frmTLChat.h"
#include "platform/WindowAlert.h"
#include "shell/frmTLMain.h"
#include <QSignalSpy>
#include <QTextCursor>

namespace {

constexpr int kWait = 10000;

// One letter a character of the log: R red bold, B blue bold, K black bold, k plain.
QString formats(QTextEdit* rtb) {
    QString codes;
    const QString text = rtb->toPlainText();
    for (int i = 0; i < text.size(); ++i) {
        QTextCursor at(rtb->document());
        at.setPosition(i + 1);
        const QTextCharFormat format = at.charFormat();
        const QColor color = format.foreground().color(); // black where none is set
        if (text.at(i) != QLatin1Char('\n'))
            codes += color == QColor(255, 0, 0)           ? 'R'
                     : color == QColor(0, 0, 255)         ? 'B'
                     : format.fontWeight() >= QFont::Bold ? 'K'
                                                          : 'k';
    }
    return codes;
}

} // namespace

// Chat through a real chat server and a real tavlo-server: connecting (a first-time user
// registers), the chat state on the server, network loss, conversations with a peer; then a
// socket's own failure and how the log colours names.
class TestChat : public QObject {
    Q_OBJECT
    SignInFixture f;
    std::unique_ptr<ProsodyServer> chat;
    int flashes = 0;

    frmTLView& board() { return Form<frmTLView>(); }
    QString panel() { return board().StatusBarBottom->Panel(QStringLiteral("chatstatus"))->text(); }
    int sent(const QString& statement) { return int(f.gateway->statements().count(statement)); }
    bool online() { return board().Socket && board().Socket->IsConnected(); }

    bool signIn(const QString& name) {
        TLMain().Settings().EnableChat = true;
        TLMain().Settings().SetChatServer(chat->chatServerSetting());
        return TLMain().ActiveUser().Login(name, QStringLiteral("demo"));
    }

    // Another person's chat program, signed in with an account of its own.
    std::unique_ptr<::Socket> peer(const QString& user, const QString& resource) {
        chat->registerUser(user, QStringLiteral("pw"));
        auto socket = std::make_unique<::Socket>();
        QSignalSpy in(socket.get(), &::Socket::Authenticated);
        socket->Connect(chat->host(), chat->port(), user, QStringLiteral("pw"), resource, 1, 2,
                        false);
        return in.wait(kWait) ? std::move(socket) : nullptr;
    }

private slots:
    void initTestCase() {
        QVERIFY2(f.start(), qPrintable(f.server->failure()));
        WindowAlert::SetFlashHook([this](QWindow*) { ++flashes; });
    }

    void init() {
        if (!chat || !chat->started())
            chat = std::make_unique<ProsodyServer>();
        QVERIFY2(chat->started(), qPrintable(chat->failure()));
        f.reset();
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        TLMain().Settings().ChatConnected = TLMain().Settings().ChatConnecting = false;
        Form<frmTLMain>().tmrUpdateStatus->stop();
        Form<frmTLMain>().tmrCheckNetwork->stop();
        flashes = 0;
    }

    // A first-time user is refused, registers and comes online with no message; the next
    // sign-in goes straight in. The server hears ", 1" on connecting and ", 0" whenever the
    // connection goes: at sign-out, when the network watch finds no network (the next poll
    // connects again), and when the chat server goes away (the user is told; chat is off).
    void connectionComesAndGoes() {
        const QString on = QStringLiteral("EXEC tl_UpdateChatStatus 1001, 1");
        const QStringList off{QStringLiteral("EXEC tl_UpdateChatStatus 1001, 0")};
        QVERIFY(signIn(QStringLiteral("ann")));
        QTRY_VERIFY_WITH_TIMEOUT(online(), kWait);
        QTRY_COMPARE(sent(on), 2); // the first connect and the one that registers
        QVERIFY(f.boxes.isEmpty());
        QCOMPARE(panel(), QStringLiteral("Chat: Online"));
        QVERIFY(board().mnuChat->isEnabled() &&
                Form<frmTLMain>().mnuSendInstantMessage->isEnabled());
        const QString flag =
            QStringLiteral("SELECT chatstatus FROM contact WHERE contactsys = 1001");
        QCOMPARE(f.query(flag).toInt(), 1);
        TLMain().ActiveUser().Logout();
        QCOMPARE(sent(off[0]), 1);
        QVERIFY(!board().Socket);
        QCOMPARE(f.query(flag).toInt(), 0);

        f.gateway->clear();
        QVERIFY(signIn(QStringLiteral("ann")));
        QTRY_VERIFY_WITH_TIMEOUT(online(), kWait);
        QTest::qWait(300);
        QCOMPARE(sent(on), 1);

        NetworkInterfaces::SetSource(&FakeNetwork::OnlyLoopback);
        QCOMPARE(f.sentBy([] { Form<frmTLMain>().tmrCheckNetwork_Timer(); }), off);
        QVERIFY(!board().Socket && !TLMain().Settings().ChatConnected);
        QVERIFY(!Form<frmTLMain>().mnuLeaveMessage->isEnabled());
        QVERIFY(f.sentBy([] { Form<frmTLMain>().tmrUpdateStatus_Timer(); }).isEmpty());
        NetworkInterfaces::SetSource(&FakeNetwork::Wired);
        Form<frmTLMain>().tmrUpdateStatus_Timer();
        QTRY_VERIFY_WITH_TIMEOUT(online(), kWait);
        QCOMPARE(f.gateway->statements().last(), on);

        f.gateway->clear();
        chat->stop();
        QTRY_VERIFY_WITH_TIMEOUT(!board().Socket, kWait);
        QCOMPARE(f.boxes.texts(),
                 QStringList{QStringLiteral("Sorry, you are not currently "
                                            "connected to the Tavlo Chat Server.")});
        QCOMPARE(f.gateway->statements(), off);
        QCOMPARE(panel(), QStringLiteral("Chat: Offline"));
        QVERIFY(!board().mnuChat->isEnabled());
        chat.reset(); // the next test starts a server of its own
    }

    // A peer's messages open one window per full address; one's own lines go out filtered.
    void conversations() {
        QVERIFY(signIn(QStringLiteral("ann")));
        QTRY_VERIFY_WITH_TIMEOUT(online(), kWait);
        auto bob = peer(QStringLiteral("bob"), QStringLiteral("Tavlo"));
        auto bobPhone = peer(QStringLiteral("bob"), QStringLiteral("Phone"));
        QVERIFY(bob && bobPhone);
        const QString ann = QStringLiteral("ann@localhost/Tavlo");

        bob->SendMessage(ann, QString(), QStringLiteral("hello"));
        QTRY_COMPARE_WITH_TIMEOUT(board().chats.size(), 1, kWait);
        frmTLChat* window = board().chats[0];
        QCOMPARE(window->windowTitle(), QStringLiteral("Chat with bob"));
        QCOMPARE(frmTLChat::Text(window->txtMessage), QStringLiteral("<bob> hello"));
        bob->SendMessage(ann, QString(), QStringLiteral("fish & chips?"));
        QTRY_COMPARE_WITH_TIMEOUT(frmTLChat::Text(window->txtMessage),
                                  QStringLiteral("<bob> hello\r\n<bob> fish & chips?"), kWait);
        QCOMPARE(flashes, 2);
        bobPhone->SendMessage(ann, QString(), QStringLiteral("from my phone"));
        QTRY_COMPARE_WITH_TIMEOUT(board().chats.size(), 2, kWait);

        QSignalSpy heard(bob.get(), &::Socket::Chat);
        window->txtChat->setText(QStringLiteral("a\\b <c>"));
        QTest::keyClick(window->txtChat, Qt::Key_Return);
        QCOMPARE(window->txtChat->text(), QString());
        QVERIFY(frmTLChat::Text(window->txtMessage).endsWith(QStringLiteral("\r\n<me> a b (c)")));
        QTRY_COMPARE_WITH_TIMEOUT(heard.size(), 1, kWait);
        QCOMPARE(heard[0][2].toString(), QStringLiteral("a b (c)"));

        // Opening by name finds the open window; a new name opens an empty one, unflashed.
        board().Chat(QStringLiteral("bob"));
        QCOMPARE(board().chats.size(), 2);
        board().Chat(QStringLiteral("carol"));
        QCOMPARE(board().chats.size(), 3);
        frmTLChat* toCarol = board().chats[2];
        QCOMPARE(flashes, 3);

        // Carol isn't on chat: the message bounces, the user is told, the connection stays.
        toCarol->txtChat->setText(QStringLiteral("hi"));
        toCarol->cmdSend->click();
        QCOMPARE(frmTLChat::Text(toCarol->txtMessage), QStringLiteral("\r\n<me> hi"));
        QTRY_COMPARE_WITH_TIMEOUT(f.boxes.size(), 1, kWait);
        QCOMPARE(f.boxes[0].text, QStringLiteral("User is not signed into chat."));
        QVERIFY(online());

        // A closed window is forgotten: bob's next message opens a new one.
        window->close();
        bob->SendMessage(ann, QString(), QStringLiteral("still there?"));
        QTRY_COMPARE_WITH_TIMEOUT(board().chats.size(), 4, kWait);
        QCOMPARE(frmTLChat::Text(board().chats[3]->txtMessage),
                 QStringLiteral("<bob> still there?"));
    }

    // A socket deleted by its own error handler raises nothing more.
    void aSocketDeletedByItsErrorHandlerStopsThere() {
        QPointer<::Socket> lonely = new ::Socket;
        QSignalSpy lonelyErrors(lonely.data(), &::Socket::Error);
        connect(lonely.data(), &::Socket::Error, lonely.data(),
                [&lonely] { delete lonely.data(); });
        lonely->SendMessage(QStringLiteral("ann@localhost/Desk"), {}, QStringLiteral("one"));
        lonely->SendMessage(QStringLiteral("ann@localhost/Desk"), {}, QStringLiteral("two"));
        QTRY_VERIFY_WITH_TIMEOUT(lonely.isNull(), kWait);
        QCOMPARE(lonelyErrors.count(), 1);
        QCOMPARE(lonelyErrors.last().at(1).toString(), QStringLiteral("Not Connected"));
    }

    // Names in bold colour (red for any four characters, as "<me>"), earlier text plain, the
    // newest text bold; a "<" with no ">" runs to the end as a name.
    void colorNames_data() {
        columns<QString, QString>("log", "codes");
        row("two lines", "<bob> hi\r\n<me> yo", "BBBBBkkkRRRRkKK");
        row("two letters", "<al> x", "RRRRkK");
        row("lone <", "<bob> a < b", "BBBBBkkkBBB");
        row("< at the end", "<bob> <", "BBBBBkB");
        row("text before a name", "x <bob> hi", "kkBBBBBkKK");
    }
    void colorNames() {
        auto [log, codes] = fetch<QString, QString>("log", "codes");
        QTextEdit box;
        frmTLChat::SetText(&box, log);
        frmTLChat::ColorNames(&box);
        QCOMPARE(formats(&box), codes);
    }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestChat)
#include "tst_chat.moc"
