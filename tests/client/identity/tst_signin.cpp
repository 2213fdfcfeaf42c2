#include "Rows.h"
#include "Rowsets.h"
#include "SignInFixture.h"
#include "StubGateway.h"
#include "board/frmTLView.h"
#include "identity/frmTLForgotPassword.h"
#include "shell/frmTLMain.h"

// Signing in and out against a real server with the demo organisation.
class TestSignIn : public QObject {
    Q_OBJECT
    SignInFixture f;

private slots:
    void initTestCase() { QVERIFY2(f.start(), qPrintable(f.server->failure())); }
    void init() { f.reset(); }

    void dialogSignInSendsItsStatementsInOrder() {
        QVERIFY(f.signInWithDialog(QStringLiteral("ann")));
        const QString board = QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,1");
        const QString colours = QStringLiteral("EXEC tl_GetAvailableColors 1,5001");
        QStringList expected = {
            "EXEC LoginCheck 'ann','demo'", "EXEC tl_GetUserStatuses NULL,1001,1,NULL",
            "EXECUTE tl_GetAvailableStatuses 1,5001,1001", "EXECUTE tl_GetOrganizationGroups 1",
            "EXECUTE tl_GetOrganizationLocations 1", "EXEC tl_SetStatus 1001,3,NULL,NULL,NULL,5001",
            // The own status reaches the board's status bar, and that first
            // touch loads the board: its list and its legend.
            board, colours,
            // Chat is off for this user: the server hears so.
            "EXEC tl_UpdateChatStatus 1001, 0", "EXECUTE tl_GetUserSecurity 5001"};
        if (TLMain().Settings().NetworkConnected())
            expected << QStringLiteral("EXEC tl_GetContactNotesUnread  1001");
        // The view is chosen again as the board comes up; then the session.
        expected << colours << board << QStringLiteral("EXECUTE GetSysVB 'Session'");
        const QString session = QString::number(TLMain().ActiveUser().SessionSys());
        expected << "INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, LoginDate, "
                    "ComputerName,IPAddress,UserSys) VALUES (" +
                        session + ",1001,'tst_signin v1.0.0',getdate(),'" +
                        TLMain().ComputerName() + "','" + TLMain().IPAddress() + "',5001)";
        QCOMPARE(f.gateway->statements(), expected);
        QVERIFY(f.boxes.isEmpty());
        QVERIFY(LoadedForm<frmTLView>() && LoadedForm<frmTLView>()->isVisible());

        // Signing out: In becomes Out with its comment, and the session is closed.
        QCOMPARE(f.sentBy([] { TLMain().ActiveUser().Logout(); }),
                 QStringList(
                     {"EXEC tl_SetStatus 1001,8,NULL,NULL,'Tavlo Shut Down',5001",
                      "UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = " + session}));
        QVERIFY(!TLMain().ActiveUser().ValidUser());
        QCOMPARE(TLMain().ActiveUser().Rights(), QString());
        QVERIFY(!LoadedForm<frmTLView>() || !LoadedForm<frmTLView>()->isVisible());
    }

    // Refused, or not asked at all without a connection: one message, the dialog stays for
    // another try, no session.
    void refusedSignIns_data() {
        columns<QString, QString, bool, QString>("name", "password", "connected", "message");
        row("bad password", "ann", "wrong", true, "Invalid Login, please try again!");
        row("removed account", "dave", "demo", true, "Your account has been removed.");
        row("disabled organisation", "ivo", "demo", true, "Your organization has been disabled.");
        row("not connected", "ann", "demo", false, "To Login, you must be connected");
    }
    void refusedSignIns() {
        auto [name, password, connected, message] =
            fetch<QString, QString, bool, QString>("name", "password", "connected", "message");
        TLMain().Settings().ConnectedNorvaneServer = connected;
        QVERIFY(!f.signInWithDialog(name, password));
        QCOMPARE(f.boxes.size(), 1);
        QVERIFY2(f.boxes[0].text.startsWith(message), qPrintable(f.boxes[0].text));
        QCOMPARE(f.boxes[0].icon(), int(vb::vbCritical));
        QVERIFY(LoadedForm<frmTLLogin>()->isVisible());
        QCOMPARE(f.gateway->statements().filter(QStringLiteral("LoginCheck")).size(), connected);
        QVERIFY(f.gateway->statements().filter(QStringLiteral("INSERT INTO Sessions")).isEmpty());
    }

    void organisationWithoutChatTurnsChatOffForGood() {
        modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        QStringLiteral("EnableChat"), QStringLiteral("1"));
        Unload<frmTLSettings>();
        f.pointAtGateway();
        QVERIFY(f.signInWithDialog(QStringLiteral("hana")));
        QCOMPARE(f.stored("EnableChat"), QStringLiteral("0"));
        QVERIFY(!TLMain().Settings().EnableChat);
        QVERIFY(!Form<frmTLMain>().mnuSendInstantMessage->isEnabled());
        QVERIFY(Form<frmTLMain>().mnuLeaveMessage->isEnabled());
    }

    // A remembered pair is stored enciphered and signs in at the next start, the dialog loaded
    // but never shown; a pair that no longer signs in is told why.
    void rememberedSignIn_data() {
        columns<QString, QString>("name", "message");
        row("bob", "bob", "");
        row("removed account", "dave", "Your account has been removed.");
    }
    void rememberedSignIn() {
        auto [name, message] = fetch<QString, QString>("name", "message");
        QVERIFY(f.signInWithDialog(QStringLiteral("bob"), QStringLiteral("demo"), true));
        QCOMPARE(f.stored("AutoLogin"), QStringLiteral("1"));
        QCOMPARE(f.stored("UserName"), QStringLiteral("bob"));
        QCOMPARE(f.stored("Password"), QStringLiteral("0j|j")); // "demo" enciphered
        TLMain().ActiveUser().Logout();
        modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        QStringLiteral("UserName"), name);
        FormRegistry::instance().unloadAll(); // as at a new start
        f.pointAtGateway();
        QCOMPARE(f.sentBy([] { Form<frmTLLogin>().Login(false); }).value(0),
                 QStringLiteral("EXEC LoginCheck '%1','demo'").arg(name));
        QCOMPARE(TLMain().ActiveUser().ValidUser(), message.isEmpty());
        QCOMPARE(f.boxes.size(), message.isEmpty() ? 0 : 1);
        QCOMPARE(f.boxes.value(0).text.left(message.size()), message);
        QVERIFY(!LoadedForm<frmTLLogin>() || !LoadedForm<frmTLLogin>()->isVisible());
    }

    // Rights decide the admin link; the delimiters keep part of a number from counting.
    void rightsFollowTheUser_data() {
        columns<QString, QString, bool>("name", "rights", "admin");
        row("administrator", "ann", "|10000000||10000016|", true);
        row("status changer", "bob", "|10000016|", false);
    }
    void rightsFollowTheUser() {
        auto [name, rights, admin] = fetch<QString, QString, bool>("name", "rights", "admin");
        QVERIFY(f.signInWithDialog(name));
        auto& user = TLMain().ActiveUser();
        QCOMPARE(user.Rights(), rights);
        QCOMPARE(Form<frmTLView>().lblAdmin->isHidden(), !admin);
        QCOMPARE(Form<frmTLView>().mnuAdmin->isVisible(), admin);
        QVERIFY(user.CheckSecurity(10000016, QString()));
        QVERIFY(!user.CheckSecurity(1000, QString()) && !user.CheckSecurity(16, QString()));
        QCOMPARE(user.CheckSecurity(10000000, QStringLiteral("open the administrator pages")),
                 admin);
        QCOMPARE(f.boxes.size(), admin ? 0 : 1);
        if (!admin)
            QVERIFY(f.boxes[0].text.endsWith(QStringLiteral("to open the administrator pages.")));
    }

    // A user with no stored choice starts on the home location; "all locations" stays chosen.
    void homeLocationOnlyWithoutAChoice_data() {
        columns<int, int>("setting", "after");
        row("no choice", 0, 1);
        row("all chosen", -1, -1);
    }
    void homeLocationOnlyWithoutAChoice() {
        auto [setting, after] = fetch<int, int>("setting", "after");
        TLMain().Settings().SetOrganizationLocationSys(setting);
        QVERIFY(f.signInWithDialog(QStringLiteral("ann")));
        QCOMPARE(TLMain().ActiveUser().OrganizationLocationSys(), 1);
        QCOMPARE(TLMain().Settings().OrganizationLocationSys(), after);
        QCOMPARE(Form<frmTLSettings>().cboLocation->currentData().toInt(), after == -1 ? 0 : after);
    }

    // Recovery asks with the typed pair, mails what the first match names, and says so.
    void passwordRecovery_data() {
        columns<QString, QString, QList<QVariantList>, QStringList, QString>(
            "lastName", "email", "matches", "sent", "box");
        const QString mail =
            "EXEC tl_SendEmail 'first@x.org','Tavlo Lost Password Request','Below is your Tavlo "
            "UserName and Password:\r\n\r\nUserName - obrien\r\nPassword - pa''ss\r\n\r\n"
            "You may now login to Tavlo by opening the Tavlo Application or by going to "
            "www.norvane.com.','info@norvane.com','info@norvane.com',''";
        row("two matches, apostrophes", " O'Brien", "ob@x.org",
            QList<QVariantList>{{"obrien", "pa'ss", "first@x.org"}, {"other", "x", "second@x.org"}},
            QStringList{"tl_ForgotPassword 'ob@x.org','O''Brien'", mail},
            "Your password has been sent to your e-mail address.");
        row("empty boxes, no match", "", "", QList<QVariantList>{},
            QStringList{"tl_ForgotPassword '',''"},
            "Sorry, you did not enter a valid Last Name or E-mail address");
    }
    void passwordRecovery() {
        auto [lastName, email, matches, sent, box] =
            fetch<QString, QString, QList<QVariantList>, QStringList, QString>(
                "lastName", "email", "matches", "sent", "box");
        TestHttpServer stub;
        stub.setAnswer(
            {200, "text/xml", RowsetBytes({"UserName", "Password", "EmailAddress"}, matches), 0});
        TLMain().Settings().SetWebAddress(stub.baseUrl());

        auto& form = Form<frmTLForgotPassword>();
        form.show();
        form.txtLastName->setText(lastName);
        form.txtEmailAddress->setText(email);
        form.cmdSubmit->click();
        QCOMPARE(PostedStatements(stub), sent);
        QCOMPARE(f.boxes.texts(), QStringList{box});
        QCOMPARE(form.isVisible(), matches.isEmpty()); // gone once mailed
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestSignIn)
#include "tst_signin.moc"
