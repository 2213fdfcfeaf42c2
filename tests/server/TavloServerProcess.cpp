#include "TavloServerProcess.h"

#include "ChildServer.h"
#include "PgInstance.h"
#include <QElapsedTimer>
#include <QRegularExpression>

QString TavloServerProcess::executable() {
    return qEnvironmentVariable("TAVLO_BINARY_DIR") + QStringLiteral("/server/tavlo-server");
}

bool TavloServerProcess::postgresRequested() {
    return qgetenv("TAVLO_TEST_ENGINE") == "postgresql";
}

TavloServerProcess::TavloServerProcess(Data data, const QStringList& serveArguments,
                                       const QString& sharedDb)
    : m_dbUrl(sharedDb), m_serveArguments(serveArguments) {
    if (m_dbUrl.isEmpty() && postgresRequested()) {
        m_pg = std::make_unique<PgInstance>();
        if (!m_pg->available()) {
            m_failure = QStringLiteral("PostgreSQL can't start: ") + m_pg->reason();
            return;
        }
        m_dbUrl = m_pg->url();
    } else if (m_dbUrl.isEmpty()) {
        m_dbUrl = QStringLiteral("sqlite:") + m_dir.filePath(QStringLiteral("tavlo.db"));
    }
    const QString setup =
        run({data == Data::Demo ? QStringLiteral("demo") : QStringLiteral("init")});
    if (!launch(0))
        m_failure = QStringLiteral("the server didn't start: ") + setup + log();
}

TavloServerProcess::~TavloServerProcess() {
    StopChild(m_process);
}

bool TavloServerProcess::restart() {
    log();
    StopChild(m_process);
    const int port = m_port;
    m_port = 0;
    return launch(port);
}

// Starts `serve` and waits for the port it says it listens on.
bool TavloServerProcess::launch(int port) {
    m_process.start(executable(), QStringList{QStringLiteral("serve"), QStringLiteral("--listen"),
                                              QStringLiteral("127.0.0.1:%1").arg(port),
                                              QStringLiteral("--db"), m_dbUrl} +
                                      m_serveArguments);
    static const QRegularExpression listening(
        QStringLiteral("listening on 127\\.0\\.0\\.1:(\\d+)"));
    QString out;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < 15000 && m_process.state() != QProcess::NotRunning) {
        m_process.waitForReadyRead(200);
        out += QString::fromLocal8Bit(m_process.readAllStandardOutput());
        if (const auto match = listening.match(out); match.hasMatch()) {
            m_port = match.captured(1).toInt();
            return true;
        }
    }
    return false;
}

bool TavloServerProcess::mayBeSkipped() const {
    return !started() && m_pg && !m_pg->available() && qgetenv("CI") != "true";
}

QString TavloServerProcess::run(const QStringList& arguments, int* exitCode) {
    QProcess command;
    command.start(executable(), arguments + QStringList{QStringLiteral("--db"), m_dbUrl});
    command.waitForFinished(30000);
    if (exitCode)
        *exitCode = command.exitStatus() == QProcess::NormalExit ? command.exitCode() : -1;
    return QString::fromLocal8Bit(command.readAllStandardOutput() + command.readAllStandardError());
}

QString TavloServerProcess::log() {
    m_log += QString::fromLocal8Bit(m_process.readAllStandardError());
    return m_log;
}
