#include "Rows.h"
#include "Screenshot.h"
#include "SignInFixture.h"
#include "base/Clock.h"
#include "directory/DirectoryLoaders.h"
#include "directory/TLStatusRow.h"
#include "shell/modTLMain.h"
#include "status/frmTLStatus.h"

// The status dialog against the demo server, signed in as ann (who may change anyone's status).
class TestStatusDialog : public QObject {
    Q_OBJECT
    SignInFixture f;

    std::shared_ptr<TLStatusRow> person(int contactSys) {
        auto row = std::make_shared<TLStatusRow>();
        row->GetContactStatus(contactSys);
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

    bool pickersEnabled(frmTLStatus& d) {
        return d.dateReturning->isEnabled() && d.cboTime->isEnabled() &&
               d.chkUnknownDateTime->isEnabled();
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

    void anInRowDisablesThePickersAndKeepsItsComment() {
        auto row = person(1001); // ann, In
        row->Comment = QStringLiteral("At my desk");
        auto& d = open(row);
        QVERIFY(d.isVisible());
        QVERIFY(d.windowFlags() & Qt::WindowStaysOnTopHint);
        QVERIFY(!d.isModal());
        QCOMPARE(d.lblName->text(), QStringLiteral("Ann Lee"));
        QCOMPARE(d.lblCurrentStatus->text(), QStringLiteral("In"));
        QVERIFY(button(d, QStringLiteral("In"))->isChecked());
        QVERIFY(!d.dateReturning->isEnabled() && !d.cboTime->isEnabled());
        QVERIFY(!d.chkUnknownDateTime->isEnabled() && !d.chkUnknownDateTime->isChecked());
        QCOMPARE(d.txtComment->text(), QStringLiteral("At my desk"));
        // Nothing stored to return to: an hour from now, today.
        QCOMPARE(d.cboTime->time(), QTime(11, 0));
        QCOMPARE(d.dateReturning->date(), QDate(2026, 11, 23));
        QVERIFY(f.gateway->statements().size() == 1); // the row's own read
    }

    void choosingInClearsTheCommentForGood() {
        auto row = person(1002);
        row->Status().StatusText = QStringLiteral("Out");
        row->Comment = QStringLiteral("Client visit");
        auto& d = open(row);
        QVERIFY(pickersEnabled(d));
        QCOMPARE(d.txtComment->text(), QStringLiteral("Client visit"));
        QVERIFY(SaveScreenshot(&d, QStringLiteral("status-dialog")));
        button(d, QStringLiteral("In"))->click();
        QCOMPARE(d.txtComment->text(), QString());
        QVERIFY(!d.dateReturning->isEnabled());
        button(d, QStringLiteral("Sick"))->click();
        QVERIFY(pickersEnabled(d));
        QCOMPARE(d.txtComment->text(), QString());
    }

    void unspecifiedReturningFallsBackToNow() {
        auto row = person(1002);
        row->Status().StatusText = QStringLiteral("Out");
        row->SetReturningText(QStringLiteral("01/01/00 12:00AM"));
        auto& d = open(row);
        QCOMPARE(d.lblReturningDate->text(), QStringLiteral("Unspecified"));
        QCOMPARE(d.dateReturning->date(), QDate(2026, 11, 23));
        QCOMPARE(d.cboTime->time(), QTime(11, 0));
    }

    void oneClickButtonsFollowTheClock() {
        Clock::SetFixed(QDateTime(QDate(2026, 11, 23), QTime(23, 30)));
        auto& d = open(person(1002));
        d.cmdOneHour->click();
        QCOMPARE(d.cboTime->time(), QTime(0, 30));
        QCOMPARE(d.dateReturning->date(), QDate(2026, 11, 24));
        d.cmdFourHour->click(); // the last one wins
        QCOMPARE(d.cboTime->time(), QTime(3, 30));
        d.cmdTomorrow->click();
        QCOMPARE(d.cboTime->time(), QTime(8, 0));
        QCOMPARE(d.dateReturning->date(), QDate(2026, 11, 24));
        Clock::SetFixed(QDateTime(QDate(2026, 11, 23), QTime(10, 15, 40)));
        d.cmdTwoHour->click(); // no rounding; the seconds fall away in the picker's form
        QCOMPARE(d.cboTime->time(), QTime(12, 15));
        QCOMPARE(d.dateReturning->date(), QDate(2026, 11, 23));
    }

    void okSendsTheChangeAndCancelSendsNothing() {
        auto& d = open(person(1002));
        button(d, QStringLiteral("Out"))->click();
        d.cmdOneHour->click();
        d.txtComment->setText(QStringLiteral("Lunch with Bob's client"));
        f.gateway->clear();
        d.cmdOK->click();
        const QStringList sent = f.gateway->statements();
        // The date argument carries the time behind the date.
        QCOMPARE(sent.value(0),
                 QStringLiteral("EXEC tl_SetStatus 1002,8,'11/23/2026 11:00 AM','11:00 AM',"
                                "'Lunch with Bob''s client',5001"));
        QCOMPARE(TLMain().SelectedStatus().StatusSys, 8);
        QVERIFY(!IsLoaded<frmTLStatus>());

        auto& again = open(person(1002));
        f.gateway->clear();
        again.cmdCancel->click();
        QVERIFY(f.gateway->statements().isEmpty());
        QVERIFY(!IsLoaded<frmTLStatus>());
    }

    void unknownDateTimeSendsNoMomentEvenAfterAQuickButton() {
        auto& d = open(person(1002));
        button(d, QStringLiteral("Out"))->click();
        d.chkUnknownDateTime->click();
        QVERIFY(!d.dateReturning->isEnabled() && !d.cboTime->isEnabled());
        d.cmdFourHour->click();
        QCOMPARE(d.cboTime->time(), QTime(14, 0)); // changed while disabled
        d.txtComment->clear();
        f.gateway->clear();
        d.cmdOK->click();
        QCOMPARE(f.gateway->statements().value(0),
                 QStringLiteral("EXEC tl_SetStatus 1002,8,NULL,NULL,NULL,5001"));
    }

    void withNoStatusChosenOkKeepsTheDialog() {
        auto row = person(1002);
        row->Status().StatusText = QStringLiteral("No such status");
        auto& d = open(row);
        for (QRadioButton* b : d.cboStatus)
            QVERIFY(!b->isChecked());
        f.gateway->clear();
        d.cmdOK->click();
        QVERIFY(f.gateway->statements().isEmpty());
        QVERIFY(IsLoaded<frmTLStatus>() && d.isVisible());
    }

    void twelveStatusesStartASecondColumn_data() {
        columns<int>("count");
        row("eleven", 11);
        row("twelve", 12);
        row("twenty-four", 24);
    }
    void twelveStatusesStartASecondColumn() {
        QFETCH(int, count);
        auto& statuses = modTLMain::colStatuses();
        modTLMain::ClearStatuses();
        for (int i = 1; i <= count; ++i) {
            auto status = std::make_shared<TLStatus>();
            status->StatusSys = 100 + i;
            status->StatusText = QStringLiteral("Status %1").arg(i);
            statuses.Add(status, status->Key());
        }
        auto& d = open(std::make_shared<TLStatusRow>());
        QCOMPARE(int(d.cboStatus.size()), count);
        const QPoint first = d.cboStatus[0]->pos();
        QCOMPARE(d.cboStatus[std::min(count, 11) - 1]->x(), first.x()); // eleven in one column
        if (count >= 12) {
            // The twelfth starts a second column at the top, which runs on downward: no third.
            QVERIFY(d.cboStatus[11]->x() > first.x());
            QCOMPARE(d.cboStatus[11]->y(), first.y());
            QCOMPARE(d.cboStatus[count - 1]->x(), d.cboStatus[11]->x());
            QVERIFY(d.fmeStatusOptions->height() > d.cboStatus[count - 1]->geometry().bottom());
        }
        QCOMPARE(d.cboStatus[5]->property("Tag").toString(), QStringLiteral("106"));
        if (count == 12)
            QVERIFY(SaveScreenshot(&d, QStringLiteral("status-dialog-twelve")));
        LoadAvailableStatuses();
    }
};

QTEST_MAIN(TestStatusDialog)
#include "tst_statusdialog.moc"
