#pragma once

#include "BoxRecorder.h"
#include "FreshUserFolders.h"
#include "RecordingGateway.h"
#include "TavloServerProcess.h"
#include "base/Forms.h"
#include "config/frmTLSettings.h"
#include "config/modTLRegistry.h"
#include "identity/frmTLLogin.h"
#include "shell/TLMain.h"
#include <QApplication>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryFile>
#include <QtTest>
#include <functional>
#include <memory>

// A demo server behind a recording gateway, a clean program state for each test, and the
// message boxes answered and kept.
class SignInFixture {
public:
    std::unique_ptr<TavloServerProcess> server;
    std::unique_ptr<RecordingGateway> gateway;
    BoxRecorder boxes;

    bool start() {
        server = std::make_unique<TavloServerProcess>(TavloServerProcess::Data::Demo);
        if (!server->started())
            return false;
        gateway = std::make_unique<RecordingGateway>(server->baseUrl());
        return true;
    }

    // Signed out, no forms, empty stored settings, live settings pointing at the gateway.
    void reset() {
        boxes.install();
        if (TLMain().ActiveUser().ValidUser())
            TLMain().ActiveUser().Logout();
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const char* name : {"AutoLogin", "UserName", "Password", "AutoStatusIn"})
            modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                            QString::fromLatin1(name), QString());
        // Chat only where a test starts a chat server and asks for it.
        modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        QStringLiteral("EnableChat"), QStringLiteral("0"));
        pointAtGateway();
        TLMain().ActiveOrganization().ChatDisabled = false;
        boxes.clear();
        gateway->clear();
    }

    // The settings dialog's first load reads the stored settings over the live ones, and saving
    // them copies the dialog back: both name the gateway.
    void pointAtGateway() {
        modTLRegistry::SetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                        QStringLiteral("WebAddress"), gateway->baseUrl());
        Form<frmTLSettings>();
        TLMain().Settings().SetWebAddress(gateway->baseUrl());
        TLMain().Settings().ConnectedNorvaneServer = TLMain().DataAccess().ConnectDB();
    }

    // Signs in through the sign-in dialog as a user would; true when someone is signed in.
    bool signInWithDialog(const QString& name, const QString& password = QStringLiteral("demo"),
                          bool remember = false) {
        auto& login = Form<frmTLLogin>();
        login.Login(true);
        login.txtUserName->setText(name);
        login.txtPassword->setText(password);
        login.chkRememberLogin->setChecked(remember);
        login.cmdOK->click();
        return TLMain().ActiveUser().ValidUser();
    }

    // The statements the program sent to the server for one action.
    QStringList sentBy(const std::function<void()>& action) {
        gateway->clear();
        action();
        return gateway->statements();
    }

    QString stored(const char* name) const {
        return modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser, modTLRegistry::kTavloKey,
                                               QString::fromLatin1(name));
    }

    // What another person does on another computer: the statement posted in that user's own
    // session (password "demo"), through the command-line query tool. False, with the tool's
    // words in why, when the tool fails or the server refuses.
    bool postAs(const QString& user, const QString& statement, QString* why = nullptr) const {
        QTemporaryFile password;
        if (!password.open() || password.write("demo\n") != 5)
            return false;
        password.flush();
        QProcess tool;
        tool.start(qEnvironmentVariable("TAVLO_BINARY_DIR") +
                       QStringLiteral("/tools/query/tavlo-query"),
                   {QStringLiteral("--url"), server->baseUrl(), QStringLiteral("--sign-in"), user,
                    QStringLiteral("--password-file"), password.fileName(), statement});
        if (!tool.waitForFinished(30000))
            return false;
        if (why)
            *why = QString::fromLocal8Bit(tool.readAllStandardError());
        // A write answers an empty body, which the tool tells with "no rowset" (3); a refusal
        // is an error page, which it tells the same way but with the HTTP status.
        const QString err = why ? *why : QString();
        return tool.exitCode() == 0 ||
               (tool.exitCode() == 3 && !err.contains(QStringLiteral("HTTP 4")));
    }

    // A value straight from the server's database (SQLite).
    QVariant query(const QString& sql) const {
        auto db =
            QSqlDatabase::contains(QStringLiteral("peek"))
                ? QSqlDatabase::database(QStringLiteral("peek"))
                : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("peek"));
        QString path = server->dbUrl();
        path.remove(0, path.indexOf(QLatin1Char(':')) + 1);
        db.setDatabaseName(path);
        if (!db.open())
            return {};
        QSqlQuery q(db);
        if (!q.exec(sql) || !q.next())
            return {};
        return q.value(0);
    }
};

// The main of a test that signs in: fresh user folders, a widget application that lives on
// with no window open (the tray program's way), then the test class.
#define TAVLO_SIGNED_IN_TEST_MAIN(TestClass)                                                       \
    int main(int argc, char** argv) {                                                              \
        FreshUserFolders folders;                                                                  \
        QApplication app(argc, argv);                                                              \
        app.setQuitOnLastWindowClosed(false);                                                      \
        TestClass test;                                                                            \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
