#include "TavloServerProcess.h"

#include "ChildServer.h"
#include "PgInstance.h"
#include <QElapsedTimer>
#include <QRegularExpression>

QString TavloServerProcess::executable() {
    return QString::fromLocal8Bit(qgetenv("TAVLO_BINARY_DIR")) +
           QStringLiteral("/server/tavlo-server");
}

bool TavloServerProcess::postgresRequested() {
    return qgetenv("TAVLO_TEST_ENGINE") == "postgresql";
}

TavloServerProcess::TavloServerProcess(Data data, const QStringList& serveArguments,
                                       const QString& sharedDb) {
    if (!sharedDb.isEmpty()) {
        m_dbUrl = sharedDb;
    } else if (postgresRequested()) {
        m_pg = std::make_unique<PgInstance>();
        if (!m_pg->available()) {
            m_failure = QStringLiteral("PostgreSQL can't start: ") + m_pg->reason();
            return;
        }
        m_dbUrl = m_pg->url();
    } else {
        m_dbUrl = QStringLiteral("sqlite:") + m_dir.filePath(QStringLiteral("tavlo.db"));
    }
    m_serveArguments = serveArguments;
    const QString setup =
        run({data == Data::Demo ? QStringLiteral("demo") : QStringLiteral("init")});
    if (!launch(0))
        m_failure = QStringLiteral("the server didn't start: ") + setup + log();
}

bool TavloServerProcess::restart() {
    log();
    StopChild(m_process);
    const int port = m_port;
    m_port = 0;
    return launch(port);
}

qint64 TavloServerProcess::pid() const {
    return m_process.processId();
}

bool TavloServerProcess::launch(int port) {
    m_process.setProcessEnvironment(QProcessEnvironment::systemEnvironment());
    m_process.start(executable(), QStringList{QStringLiteral("serve"), QStringLiteral("--listen"),
                                              QStringLiteral("127.0.0.1:%1").arg(port),
                                              QStringLiteral("--db"), m_dbUrl} +
                                      m_serveArguments);
    QElapsedTimer waited;
    waited.start();
    static const QRegularExpression listening(
        QStringLiteral("listening on 127\\.0\\.0\\.1:(\\d+)"));
    QString out;
    while (waited.elapsed() < 15000 && m_process.state() != QProcess::NotRunning) {
        m_process.waitForReadyRead(200);
        out += QString::fromLocal8Bit(m_process.readAllStandardOutput());
        const auto match = listening.match(out);
        if (match.hasMatch()) {
            m_port = match.captured(1).toInt();
            return true;
        }
    }
    return false;
}

bool TavloServerProcess::mayBeSkipped() const {
    return !started() && m_pg && !m_pg->available() && qgetenv("CI") != "true";
}

TavloServerProcess::~TavloServerProcess() {
    StopChild(m_process);
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
