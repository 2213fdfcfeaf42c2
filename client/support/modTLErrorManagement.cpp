#include "support/modTLErrorManagement.h"

#include "base/MsgBox.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "shell/AppVersion.h"
#include "shell/TLMain.h"
#include "wire/Cp1252.h"
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <exception>

namespace modTLErrorManagement {
namespace {

constexpr qsizetype kLongestText = 250;
const QString kSeparator = QStringLiteral("|~~|");

// The description of the failure being handled, or "" outside a trap.
QString descriptionInFlight() {
    if (!std::current_exception())
        return QString();
    return CurrentError().description;
}

QString programNameAndVersion() {
    return QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName() +
           QLatin1Char(' ') + AppVersion::Text();
}

void appendToLog(const QString& line) {
    QFile log(kLogFileName);
    if (!log.open(QIODevice::Append | QIODevice::Text))
        throw std::runtime_error("the log can't be written");
    const QByteArray bytes = wire::cp1252::encode(line) + '\n';
    if (log.write(bytes) != bytes.size())
        throw std::runtime_error("the log can't be written");
}

} // namespace

std::int32_t ReportAnomaly(const QString& procedureName, QString& errorText,
                           std::int32_t errorNumber) {
    // The note field is never filled; its separator stays all the same.
    const QString note;
    try {
        Screen::SetMousePointer(Screen::vbDefault);
        QString description = descriptionInFlight();
        description.replace(QLatin1Char('\''), QLatin1Char('*'));
        errorText = (errorText + QStringLiteral(": ") + description).left(kLongestText);

        auto& root = TLMain();
        appendToLog(errorText + kSeparator + QString::number(errorNumber) + kSeparator +
                    procedureName + kSeparator + QString::number(root.ActiveUser().UserSys()) +
                    kSeparator + note);

        MsgBox(errorText, vb::vbCritical, QStringLiteral("Anomaly Report ::") + procedureName);
        Screen::SetMousePointer(Screen::vbDefault);

        const QString statement =
            QStringLiteral("EXECUTE LogAnomaly '") + errorText + QStringLiteral("',") +
            QString::number(errorNumber) + QStringLiteral(",'") + procedureName +
            QStringLiteral("','") + programNameAndVersion() + QStringLiteral("',") +
            QString::number(root.ActiveContact().ContactSys) + QStringLiteral(",'") + note +
            QStringLiteral("','") + root.ComputerName() + QLatin1Char('\'');
        root.DataAccess().ExecuteSQLFromWeb(statement, true);

        if (QFile::exists(kLogFileName))
            QFile::remove(kLogFileName);
    } catch (...) {
        // A failure inside the reporter ends it quietly with its work done so far.
    }
    return 0;
}

void ReportTrapped(const QString& procedureName) {
    const Trapped error = CurrentError();
    QString text = error.description;
    ReportAnomaly(procedureName, text, error.number);
}

} // namespace modTLErrorManagement
