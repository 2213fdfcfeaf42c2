#include "Rows.h"
#include "Screenshot.h"
#include "SignInFixture.h"
#include "base/Clock.h"
#include "directory/DirectoryLoaders.h"
#include "directory/TLStatusRow.h"
#include "shell/modTLMain.h"
#include "status/frmTLStatus.h"

// The status dialog against the demo server, signed in as ann (who may change anyone's status),
// at Monday 11/23/2026 10:00 AM.
class TestStatusDialog : public QObject {
    Q_OBJECT
    SignInFixture f;

    // A person's row as the server has it, the status text replaced when one is given.
    std::shared_ptr<TLStatusRow> person(int contactSys, const QString& status = QString()) {
        auto row = std::make_shared<TLStatusRow>();
        row->GetContactStatus(contactSys);
        if (!status.isEmpty())
            row->Status().StatusText = status;
        return row;
    }

    frmTLStatus& open(const std::shared_ptr<TLStatusRow>& row) {
        auto& dialog = Form<frmTLStatus>();
        dialog.StatusRow = row;
        dialog.ShowDialog();
        return dialog;
    }

    QRadioButton* button(frmTLStatus& dialog, const QString& caption) {
        for (QRadioButton* b : dialog.cboStatus)
            if (frmTLStatus::Caption(b) == caption)
                return b;
        return nullptr;
    }

    // Which of date, time and "unknown" can be changed, 1 for each.
    QString pickers(frmTLStatus& d) {
        QString on;
        for (const QWidget* picker : std::initializer_list<const QWidget*>{
                 d.dateReturning, d.cboTime, d.chkUnknownDateTime})
            on += picker->isEnabled() ? QLatin1Char('1') : QLatin1Char('0');
        return on;
    }

private slots:
    void initTestCase() {
        QVERIFY2(f.start(), qPrintable(f.server->failure()));
        f.reset();
        QVERIFY(f.signInWithDialog(QStringLiteral("ann")));
    }

    void init() {
        Clock::SetFixed(QDateTime(QDate(2026, 11, 23), QTime(10, 0)));
        f.gateway->clear();
    }

    void cleanup() {
        Unload<frmTLStatus>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Clock::Release();
    }

    // The row's status chosen and its comment kept, In keeping the pickers off; with no moment
    // to return to, an hour from now. Only choosing In clears the comment, and for good.
    void opensOnTheRowAndInClearsTheComment() {
        auto row = person(1001); // ann, In
        row->Comment = QStringLiteral("At my desk");
        row->SetReturningText(QStringLiteral("01/01/00 12:00AM"));
        auto& d = open(row);
        QCOMPARE(d.lblName->text(), QStringLiteral("Ann Lee"));
        QCOMPARE(d.lblCurrentStatus->text(), QStringLiteral("In"));
        QCOMPARE(d.lblReturningDate->text(), QStringLiteral("Unspecified"));
        QCOMPARE(pickers(d), QStringLiteral("000")); // In is chosen
        QCOMPARE(QDateTime(d.dateReturning->date(), d.cboTime->time()),
                 QDateTime(QDate(2026, 11, 23), QTime(11, 0)));
        button(d, QStringLiteral("Sick"))->click();
        QCOMPARE(pickers(d), QStringLiteral("111"));
        QCOMPARE(d.txtComment->text(), QStringLiteral("At my desk"));
        QVERIFY(SaveScreenshot(&d, QStringLiteral("status-dialog")));
        button(d, QStringLiteral("In"))->click();
        button(d, QStringLiteral("Sick"))->click();
        QCOMPARE(d.txtComment->text(), QString());
    }

    // The quick buttons set the moment from the clock, the last one winning; Cancel then sends
    // nothing.
    void oneClickButtonsFollowTheClock() {
        Clock::SetFixed(QDateTime(QDate(2026, 11, 23), QTime(23, 30)));
        auto& d = open(person(1002));
        auto returning = [&] { return QDateTime(d.dateReturning->date(), d.cboTime->time()); };
        d.cmdOneHour->click();
        QCOMPARE(returning(), QDateTime(QDate(2026, 11, 24), QTime(0, 30)));
        d.cmdFourHour->click(); // the last one wins
        QCOMPARE(returning(), QDateTime(QDate(2026, 11, 24), QTime(3, 30)));
        d.cmdTomorrow->click();
        QCOMPARE(returning(), QDateTime(QDate(2026, 11, 24), QTime(8, 0)));
        Clock::SetFixed(QDateTime(QDate(2026, 11, 23), QTime(10, 15, 40)));
        d.cmdTwoHour->click(); // no rounding; the seconds fall away in the picker's form
        QCOMPARE(returning(), QDateTime(QDate(2026, 11, 23), QTime(12, 15)));
        QVERIFY(f.sentBy([&] { d.cmdCancel->click(); }).isEmpty());
        QVERIFY(!IsLoaded<frmTLStatus>());
    }

    // OK sends the chosen status for the row's person; the date argument carries the time
    // behind the date. "Unknown" sends no moment even after a quick button, nor does In.
    // Without a chosen status nothing is sent and the dialog stays for a choice.
    void okSendsTheChange_data() {
        columns<QString, bool, QString, QString>("status", "unknown", "comment", "statement");
        row("out in an hour", "Out", false, "Lunch with Bob's client",
            "EXEC tl_SetStatus 1002,8,'11/23/2026 11:00 AM','11:00 AM','Lunch with Bob''s "
            "client',5001");
        row("unknown moment", "Out", true, "", "EXEC tl_SetStatus 1002,8,NULL,NULL,NULL,5001");
        row("in", "In", false, "", "EXEC tl_SetStatus 1002,3,NULL,NULL,NULL,5001");
        row("no status chosen", "", false, "", "");
    }
    void okSendsTheChange() {
        auto [status, unknown, comment, statement] =
            fetch<QString, bool, QString, QString>("status", "unknown", "comment", "statement");
        auto& d = open(person(1002, QStringLiteral("No such status")));
        if (!status.isEmpty())
            button(d, status)->click();
        if (unknown)
            d.chkUnknownDateTime->click();
        d.cmdOneHour->click();
        d.txtComment->setText(comment);
        QCOMPARE(f.sentBy([&] { d.cmdOK->click(); }).value(0), statement);
        QCOMPARE(IsLoaded<frmTLStatus>(), statement.isEmpty());
    }

    // Eleven statuses a column; the twelfth starts a second column at the top, which then runs
    // on downward, past the frame's first height: no third.
    void statusesInTwoColumns() {
        modTLMain::ClearStatuses();
        for (int i = 1; i <= 24; ++i) {
            auto status = std::make_shared<TLStatus>();
            status->StatusSys = 100 + i;
            status->StatusText = QStringLiteral("Status %1").arg(i);
            modTLMain::colStatuses().Add(status, status->Key());
        }
        auto& d = open(std::make_shared<TLStatusRow>());
        QList<int> lefts;
        QString columns;
        for (const QRadioButton* b : d.cboStatus) {
            if (!lefts.contains(b->x()))
                lefts << b->x();
            columns += QString::number(lefts.indexOf(b->x()) + 1);
        }
        QCOMPARE(columns, QStringLiteral("111111111112222222222222"));
        QCOMPARE(d.cboStatus[11]->y(), d.cboStatus[0]->y());
        QVERIFY(d.fmeStatusOptions->height() > d.cboStatus.back()->geometry().bottom());
        QVERIFY(SaveScreenshot(&d, QStringLiteral("status-dialog-two-columns")));
        LoadAvailableStatuses();
    }
};

QTEST_MAIN(TestStatusDialog)
#include "tst_statusdialog.moc"
