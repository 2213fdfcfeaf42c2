#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <memory>

class PgInstance;

// A real tavlo-server for a test: a fresh database in a temp folder (SQLite, or a private
// PostgreSQL when TAVLO_TEST_ENGINE=postgresql), demo data if asked, serving on a free
// loopback port, stopped with the object. serveArguments are added to `serve`'s own.
class TavloServerProcess {
public:
    enum class Data { Empty, Demo };
    // sharedDb: serve an existing database (set up by another server) instead of a fresh one.
    explicit TavloServerProcess(Data data = Data::Demo, const QStringList& serveArguments = {},
                                const QString& sharedDb = QString());
    ~TavloServerProcess();

    bool started() const { return m_port > 0; }
    QString failure() const { return m_failure; }
    // PostgreSQL was asked for and can't start on this machine: a test may skip, except in CI
    // (CI=true), where that is a failure.
    bool mayBeSkipped() const;
    int port() const { return m_port; }
    QString baseUrl() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_port); }
    QString dbUrl() const { return m_dbUrl; }
    PgInstance* postgres() const { return m_pg.get(); } // null on SQLite
    // Runs a one-off command of the server (outbox, anomalies, ...) on the same database;
    // answers its output and, when asked, its exit code.
    QString run(const QStringList& arguments, int* exitCode = nullptr);
    // What the server wrote to its error output so far.
    QString log();
    // Stops the server and starts it again on the same port and database.
    bool restart();
    qint64 pid() const { return m_process.processId(); }

    static QString executable();
    static bool postgresRequested();

private:
    QTemporaryDir m_dir;
    std::unique_ptr<PgInstance> m_pg;
    bool launch(int port);
    QString m_dbUrl;
    QStringList m_serveArguments;
    QProcess m_process;
    QString m_log;
    QString m_failure;
    int m_port = 0;
};
