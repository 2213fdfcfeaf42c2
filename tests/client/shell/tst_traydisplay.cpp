#include "FreshUserFolders.h"
#include "BoxRecorder.h"
#include "Rows.h"
#include "base/Forms.h"
#include "base/TLError.h"
#include "config/modTLRegistry.h"
#include "shell/TrayDisplay.h"
#include "shell/TrayPictures.h"
#include "shell/frmTLMain.h"
#include "shell/frmTLWarningSysTray.h"
#include <QApplication>
#include <QImage>
#include <QtTest>

using namespace TrayDisplay;

// What the tray shows for each state, the pictures themselves, and the shell's small dialogs.
class TestTrayDisplay : public QObject {
    Q_OBJECT
    BoxRecorder boxes;

    static QColor centreOf(int index, int size) {
        return TrayPictures::Picture(index, size).toImage().pixelColor(size / 5, size / 2);
    }

private slots:
    void init() { boxes.install(); }

    void pictureByState_data() {
        columns<bool, int, int, int>("valid", "status", "notes", "picture");
        row("signed out", false, 3, 0, kSignedOut);
        row("signed out with notes", false, 3, 2, kSignedOut);
        row("in", true, 3, 0, kIn);
        row("in with notes", true, 3, 1, kInWithNotes);
        row("unavailable", true, 6, 0, kUnavailable);
        row("unavailable with notes", true, 6, 5, kUnavailableWithNotes);
        row("out", true, 8, 0, kOther);
        row("lunch with notes", true, 1, 1, kOtherWithNotes);
        row("negative count still counts", true, 7, -1, kOtherWithNotes);
        row("unknown status 9", true, 9, 0, kSignedOut);
        row("unknown status 9 with notes", true, 9, 3, kSignedOut);
        row("status 0", true, 0, 0, kSignedOut);
    }
    void pictureByState() {
        QFETCH(bool, valid);
        QFETCH(int, status);
        QFETCH(int, notes);
        QFETCH(int, picture);
        QCOMPARE(PictureIndex(valid, status, notes), picture);
    }

    void tipText() {
        QCOMPARE(TipText(false, QStringLiteral("Ann Lee"), QStringLiteral("In")),
                 QStringLiteral("Tavlo - Not Logged In"));
        QCOMPARE(TipText(true, QStringLiteral("Ann Lee"), QStringLiteral("In")),
                 QStringLiteral("Ann Lee\rStatus set to In"));
        const QString longTip(80, QLatin1Char('x'));
        QCOMPARE(FittedTip(longTip), QString(64, QLatin1Char('x')));
        QCOMPARE(FittedTip(QString(63, QLatin1Char('y'))).size(), 63);
    }

    // Every picture exists at the tray's sizes; the four looks differ, and the notes mark shows.
    void picturesHaveTheirLooks() {
        for (int index = 1; index <= TrayPictures::kCount; ++index) {
            const QIcon icon = TrayPictures::Icon(index);
            QCOMPARE(icon.availableSizes().size(), 3);
        }
        for (int size : {16, 22, 32}) {
            const QSet<QRgb> looks = {centreOf(kSignedOut, size).rgb(), centreOf(kIn, size).rgb(),
                                      centreOf(kUnavailable, size).rgb(),
                                      centreOf(kOther, size).rgb()};
            QCOMPARE(looks.size(), 4);
            for (auto [plain, marked] :
                 {std::pair{kIn, kInWithNotes}, std::pair{kUnavailable, kUnavailableWithNotes},
                  std::pair{kOther, kOtherWithNotes}}) {
                const QImage a = TrayPictures::Picture(plain, size).toImage();
                const QImage b = TrayPictures::Picture(marked, size).toImage();
                const QColor corner = b.pixelColor(size * 3 / 4, size * 7 / 8);
                QVERIFY2(a != b, qPrintable(QString::number(marked)));
                QVERIFY(corner.red() > 200 && corner.green() > 180 && corner.blue() < 120);
            }
        }
    }

    void shellResults() {
        QVERIFY(ShellResultIsSuccess(31, QStringLiteral("x.htm")));
        QVERIFY(ShellResultIsSuccess(42, QStringLiteral("x.htm")));
        QVERIFY(boxes.isEmpty());
        QVERIFY(!ShellResultIsSuccess(2, QStringLiteral("x.htm")));
        QCOMPARE(boxes.last().text,
                 QStringLiteral("An error occured opening your web browser.  Please make sure your "
                                "web browser is correctly installed and try again."));
        QCOMPARE(boxes.last().icon(), 0);
        QVERIFY(!ShellResultIsSuccess(32, QStringLiteral("x.htm")));
        QCOMPARE(boxes.last().text,
                 QStringLiteral("Tavlo could not find a file association for x.htm on your system. "
                                "You should check that your browseris correctly installed and "
                                "associated with this type of file."));
        QCOMPARE(boxes.last().icon(), int(vb::vbExclamation));
        QCOMPARE(boxes.last().title, QStringLiteral("Browser Unavailable"));
    }

    // The reminder shows until the user ticks the box once; from then on it stays away.
    void minimizeReminder() {
        frmTLWarningSysTray::ShowUnlessDeclined();
        QVERIFY(LoadedForm<frmTLWarningSysTray>()->isVisible());
        auto& form = Form<frmTLWarningSysTray>();
        QCOMPARE(form.windowTitle(), QStringLiteral("Tavlo Minimize Action"));
        form.cmdOk->click();
        QVERIFY(!IsLoaded<frmTLWarningSysTray>());
        frmTLWarningSysTray::ShowUnlessDeclined();
        Form<frmTLWarningSysTray>().chkDontShowAgain->setChecked(true);
        Form<frmTLWarningSysTray>().cmdOk->click();
        QCOMPARE(modTLRegistry::GetRegistryValue(RegistryRoot::CurrentUser,
                                                 modTLRegistry::kTavloKey,
                                                 QStringLiteral("DontShowMinimize")),
                 QStringLiteral("1"));
        frmTLWarningSysTray::ShowUnlessDeclined();
        QVERIFY(!IsLoaded<frmTLWarningSysTray>());
    }

    // Status entries come and go behind the first, which always stays.
    void statusEntries() {
        auto& tray = Form<frmTLMain>();
        QCOMPARE(tray.mnuPopOptions.size(), std::size_t(1));
        QCOMPARE(tray.mnuPopOptions[0]->text(), QStringLiteral("Available"));
        tray.LoadOption(2);
        QCOMPARE(tray.mnuPopOptions.size(), std::size_t(3));
        QCOMPARE(tray.mnuPopStatusMenu->actions().size(), 3);
        tray.UnloadOption(2);
        tray.UnloadOption(1);
        QCOMPARE(tray.mnuPopStatusMenu->actions().size(), 1);
        QVERIFY_THROWS_EXCEPTION(wire::ComError, tray.UnloadOption(0));
        const QString tip(70, QLatin1Char('t'));
        tray.ChangeToolTip(tip);
        QCOMPARE(tray.TrayTip(), tip.left(64));
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestTrayDisplay)
#include "tst_traydisplay.moc"
