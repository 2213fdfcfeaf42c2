#include "Rows.h"
#include "Screenshot.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "directory/TLStatusRow.h"
#include "identity/frmTLLogin.h"
#include "shell/modTLMain.h"
#include "status/frmTLStatus.h"
#include <QApplication>
#include <QBrush>
#include <QHeaderView>

// The board against a real server with the demo organisation (40 people, sorted by last name),
// signed in as ann (contact 1001, user 5001), driven by control name.
class TestBoard : public QObject {
    Q_OBJECT
    SignInFixture f;

    bool signIn(const QString& name) {
        if (TLMain().ActiveUser().ValidUser())
            TLMain().ActiveUser().Logout();
        f.signInWithDialog(name);
        // Every person of the organisation, whatever the location setting says.
        TLMain().Settings().SetOrganizationLocationSys(0);
        if (!TLMain().ActiveUser().ValidUser() || !LoadedForm<frmTLView>())
            return false;
        board().TabCategories->SelectKey(QStringLiteral("ViewChoiceStandard"));
        return true;
    }

    frmTLView& board() { return *LoadedForm<frmTLView>(); }
    SpreadGrid& grid() { return *board().gridStatus; }

    // Grid row (from 1) of a person in the standard view, 0 when absent.
    int standardRowOf(int contactSys) {
        for (int r = 1; r <= grid().MaxRows(); ++r)
            if (grid().GetRowItemData(r) == contactSys)
                return r;
        return 0;
    }

    QString cellText(int row, int col) {
        grid().Row = row;
        grid().Col = col;
        return grid().Text();
    }

    // A standard-view row as shown, cells joined by '|', the friend box as 0 or 1; row 0 gives
    // the captions.
    QString shownRow(int row) {
        grid().Row = row;
        grid().Col = 1;
        QStringList cells{row == 0 ? grid().Text() : QString::number(grid().Value())};
        for (int c = 2; c <= 7; ++c)
            cells << cellText(row, c);
        return cells.join(QLatin1Char('|'));
    }

    // What the view is shown of a cell (from 1, as the board counts).
    QVariant cellData(int row, int col, int role) {
        return grid().model()->data(grid().model()->index(row - 1, col - 1), role);
    }

    // The pop-up menu's In, Out, Unavailable and Other, 1 for each enabled; closes the menu.
    QString statusEntriesEnabled() {
        QString enabled;
        for (QAction* entry : {board().mnuStatusIn, board().mnuStatusOut,
                               board().mnuStatusUnavailable, board().mnuStatusOther})
            enabled += entry->isEnabled() ? QLatin1Char('1') : QLatin1Char('0');
        board().mnuStatusPopUp->close();
        return enabled;
    }

private slots:
    void initTestCase() { QVERIFY2(f.start(), qPrintable(f.server->failure())); }

    void init() {
        f.reset();
        QVERIFY(signIn(QStringLiteral("ann")));
        board().resize(900, 600);
        board().TabGroups->SelectKey(QStringLiteral("AllKey"));
        f.boxes.clear();
    }

    void standardViewShowsEveryone() {
        // A colleague whose client says it is on chat; the demo's others have said nothing.
        QVERIFY(
            f.postAs(QStringLiteral("erin"), QStringLiteral("EXEC tl_UpdateChatStatus 1005, 1")));
        board().ReloadGrid();
        QCOMPARE(grid().MaxRows(), 40);
        QCOMPARE(shownRow(0), QStringLiteral("My|Name|Ext|Status|Returning|Time|Comment"));
        QCOMPARE(shownRow(standardRowOf(1002)), QStringLiteral("1|Marsh, Bob|201|In|||"));
        QCOMPARE(shownRow(standardRowOf(1005)),
                 QStringLiteral("0|Price, Erin *|204|Out|Unspecified||Client visit"));
        QCOMPARE(cellData(standardRowOf(1005), 4, Qt::BackgroundRole).value<QBrush>().color(),
                 QColor(0xC0, 0, 0));
        // From the second person on the name column is centred, down to rows made later.
        QCOMPARE(cellData(40, 2, Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        QVERIFY(SaveScreenshot(&board(), QStringLiteral("board-standard")));
    }

    // Names only, five across here; the row counter moves on after the last name, so 40 people
    // end with an empty ninth row.
    void miniView() {
        TLMain().Settings().SetMaxColumns(5);
        board().TabCategories->SelectKey(QStringLiteral("ViewChoiceMini"));
        QCOMPARE(board().windowTitle(), QStringLiteral("Tavlo Mini View"));
        QCOMPARE(grid().MaxCols(), 7);
        QCOMPARE(grid().MaxRows(), 9);
        QVERIFY(grid().horizontalHeader()->isHidden() && grid().isColumnHidden(0));
        QVERIFY(!grid().isColumnHidden(5) && grid().isColumnHidden(6)); // no name reaches 7
        QCOMPARE(QStringList({cellText(1, 2), cellText(2, 2), cellText(8, 6)}),
                 QStringList({"Abbott, Olga", "Foster, Tara", "Zimmer, Nils"}));
        // A double click on a person opens the status dialog: the friend branch is for the
        // standard view's box column only.
        const QStringList sent = f.sentBy([&] { board().gridStatus_DblClick(2, 1); });
        QVERIFY(!sent.join(' ').contains(QStringLiteral("MyFriends")));
        QCOMPARE(LoadedForm<frmTLStatus>()->lblName->text(), QStringLiteral("Olga Abbott"));
        Unload<frmTLStatus>();
        QVERIFY(SaveScreenshot(&board(), QStringLiteral("board-mini")));

        board().TabCategories->SelectKey(QStringLiteral("ViewChoiceStandard"));
        QVERIFY(!grid().horizontalHeader()->isHidden() && !grid().isColumnHidden(0));
    }

    void groupTabsAndFriends() {
        QStringList sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("KEY1")); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_GetUserStatuses 1,NULL,1,5001,NULL")});
        QCOMPARE(grid().MaxRows(), 14);

        sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("MyFriends")); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_GetMyFriendsList 5001,1")});
        QCOMPARE(TLMain().ActiveGroup().GroupSys, 1); // the friends list keeps the group
        QCOMPARE(grid().MaxRows(), 4);

        sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("AllKey")); });
        QCOMPARE(sent,
                 QStringList{QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL")});
        QCOMPARE(TLMain().ActiveGroup().GroupSys, 0); // the failed look-up dropped the group
        QCOMPARE(grid().MaxRows(), 40);
    }

    void friendsByBoxAndMenu() {
        QStringList sent = f.sentBy([&] { board().gridStatus_DblClick(1, standardRowOf(1004)); });
        QCOMPARE(sent.value(0), QStringLiteral("EXECUTE tl_MyFriendsAdd 5001,1004"));
        QCOMPARE(sent.size(), 2); // and the reload
        QVERIFY(shownRow(standardRowOf(1004)).startsWith(QStringLiteral("1|Ortiz, Dave|")));

        board().TabGroups->SelectKey(QStringLiteral("MyFriends"));
        QCOMPARE(grid().MaxRows(), 5);
        int rowsWhenRemoved = -1;
        f.gateway->setObserver([&](const QString& statement) {
            if (statement.startsWith(QStringLiteral("EXECUTE tl_MyFriendsRemove")))
                rowsWhenRemoved = grid().MaxRows();
        });
        sent = f.sentBy([&] { board().gridStatus_DblClick(1, standardRowOf(1004)); });
        f.gateway->setObserver(nullptr);
        QCOMPARE(sent.value(0), QStringLiteral("EXECUTE tl_MyFriendsRemove 5001,1004"));
        QCOMPARE(rowsWhenRemoved, 4); // the row went before the server was asked
        QCOMPARE(grid().MaxRows(), 4);
        QCOMPARE(standardRowOf(1004), 0);
        QCOMPARE(grid().model()->rowCount(), 4); // the view follows the sheet

        // The menu adds by the person's user number, not the contact's, and doesn't reload.
        board().TabGroups->SelectKey(QStringLiteral("AllKey"));
        board().ContextRow = modTLMain::colContacts()[QStringLiteral("1005")];
        sent = f.sentBy([&] { board().mnuAddMyFriends->trigger(); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXECUTE tl_MyFriendsAdd 5001,5005")});
        f.query(QStringLiteral("DELETE FROM friend WHERE usersys = 5001 AND contactsys = 1005"));
    }

    // ann may change anyone's status, carol only her own: the menu offers every status but the
    // person's own to ann and none to carol, and a double click opens the dialog or says no.
    void rightsDecideWhoseStatusChanges() {
        board().gridStatus_RightClick(1, 4, 1, 10, 10); // off the name column: no key, no menu
        QVERIFY(!board().ContextRow && !board().mnuStatusPopUp->isVisible());
        board().gridStatus_RightClick(1, 2, standardRowOf(1008), 10, 10); // Hugo Stone, In
        QCOMPARE(board().ContextRow->Contact().ContactSys, 1008);
        QVERIFY(board().mnuStatusPopUp->isVisible());
        QCOMPARE(statusEntriesEnabled(), QStringLiteral("0111"));

        QVERIFY(signIn(QStringLiteral("carol")));
        f.boxes.clear();
        board().gridStatus_RightClick(1, 2, standardRowOf(1008), 10, 10);
        QCOMPARE(statusEntriesEnabled(), QStringLiteral("0000"));
        board().gridStatus_DblClick(4, standardRowOf(1002));
        QVERIFY(f.boxes.texts().value(0).contains(QStringLiteral("sufficient rights")));
        QVERIFY(!IsLoaded<frmTLStatus>());
        board().gridStatus_DblClick(4, 0); // the headers do nothing
        board().gridStatus_DblClick(0, 1);
        QCOMPARE(f.boxes.size(), 1);
        board().gridStatus_DblClick(4, standardRowOf(1003)); // carol herself
        QVERIFY(LoadedForm<frmTLStatus>()->isVisible());
        QCOMPARE(LoadedForm<frmTLStatus>()->lblName->text(), QStringLiteral("Carol Nolan"));
        Unload<frmTLStatus>();
    }

    // The menu sets the status of the person under it, the legend's labels one's own, which
    // alone moves the status bar; the board reloads after either.
    void statusEntries_data() {
        columns<QString, int, int, QString>("entry", "contact", "status", "own");
        row("menu In", "mnuStatusIn", 1004, 3, "In");
        row("menu Out", "mnuStatusOut", 1004, 8, "In");
        row("menu Unavailable", "mnuStatusUnavailable", 1004, 6, "In");
        row("label In", "lblStatusTransIn", 1001, 3, "In");
        row("label Out", "lblStatusTransOut", 1001, 8, "Out");
        row("label Unavailable", "lblStatusTransUnavailable", 1001, 6, "Unavailable");
    }
    void statusEntries() {
        auto [entry, contact, status, own] =
            fetch<QString, int, int, QString>("entry", "contact", "status", "own");
        board().ContextRow = modTLMain::colContacts()[QStringLiteral("1004")];
        const QStringList sent = f.sentBy([&] {
            if (auto* label = board().findChild<ClickLabel*>(entry))
                emit label->Click();
            else
                board().findChild<QAction*>(entry)->trigger();
        });
        QCOMPARE(
            sent.value(0),
            QStringLiteral("EXEC tl_SetStatus %1,%2,NULL,NULL,NULL,5001").arg(contact).arg(status));
        QVERIFY(sent.contains(QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL")));
        QCOMPARE(board().StatusBarBottom->Panel(QStringLiteral("status"))->text(),
                 QStringLiteral("Status: ") + own);
    }

    // In hides the returning moment, a blank comment shows no brackets; off the sheet no tip.
    void toolTipFollowsThePointer() {
        f.query(QStringLiteral("UPDATE contact SET comment = '  ' WHERE contactsys = 1015"));
        board().ReloadGrid();
        board().show();
        QVERIFY(QTest::qWaitForWindowExposed(&board()));
        auto tipAt = [&](int row) {
            const QRect cell = grid().visualRect(grid().model()->index(row - 1, 3));
            const QPoint at = grid().viewport()->mapTo(&grid(), cell.center());
            board().gridStatus_MouseMove(0, 0, at.x(), at.y());
            return grid().ToolTipText();
        };
        QCOMPARE(tipAt(1), QStringLiteral("Olga Abbott Ext: 214 Status: In"));
        QCOMPARE(tipAt(standardRowOf(1005)),
                 QStringLiteral("Erin Price Ext: 204 Status: Out Returning: Unspecified  (Client "
                                "visit)"));
        board().gridStatus_MouseMove(0, 0, -50, -50);
        QCOMPARE(grid().ToolTipText(), QString());
        f.query(QStringLiteral("UPDATE contact SET comment = NULL WHERE contactsys = 1015"));
    }

    // A name or an extension searches the people; an organisation only tells whether one
    // matches, first, with its own message, and leaves the board. Enter in the extension box
    // searches as the button does.
    void search_data() {
        columns<QString, QString, QString, QStringList, QString, int>(
            "name", "extension", "organisation", "sent", "box", "rows");
        const QString none = QStringLiteral("Sorry, no entries were found.");
        const QString lee = QStringLiteral("tl_SearchContacts 'Lee',1,'',5001");
        const QString nowhere = QStringLiteral("EXECUTE tl_SearchCompany 'Nowhere Ltd'");
        row("name, wildcards dropped", " Lee* ", "", "", QStringList{lee}, "", 1);
        row("extension, by Enter", "", "205", "", QStringList{"tl_SearchContacts '',1,'205',5001"},
            "", 1);
        row("organisation found", "", "", "Norvane Demo",
            QStringList{"EXECUTE tl_SearchCompany 'Norvane Demo'"}, "", 40);
        row("organisation nobody has", "", "", "Nowhere Ltd", QStringList{nowhere}, none, 40);
        row("both", "Lee", "", "Nowhere Ltd", QStringList{nowhere, lee}, none, 1);
        row("only wildcards", "", "", " %% * ", QStringList{}, "", 40);
    }
    void search() {
        auto [name, extension, organisation, sent, box, rows] =
            fetch<QString, QString, QString, QStringList, QString, int>(
                "name", "extension", "organisation", "sent", "box", "rows");
        auto& b = board();
        b.show();
        QVERIFY(QTest::qWaitForWindowExposed(&b));
        b.ToolbarButton(3)->trigger();
        QVERIFY(b.fmeSearch->isVisible());
        b.txtName->setText(name);
        b.txtExtension->setText(extension);
        b.txtOrganization->setText(organisation);
        auto search = [&] {
            if (extension.isEmpty())
                b.cmdAction[0]->click();
            else
                QTest::keyClick(b.txtExtension, Qt::Key_Return);
        };
        QCOMPARE(f.sentBy(search), sent);
        QCOMPARE(f.boxes.texts().join(QString()), box);
        QCOMPARE(grid().MaxRows(), rows);
        QCOMPARE(QApplication::focusWidget(), b.txtName);
        if (!extension.isEmpty())
            QVERIFY(SaveScreenshot(&b, QStringLiteral("board-search")));
        b.cmdAction[1]->click(); // closes the pane and lets go of its button
        QVERIFY(!b.fmeSearch->isVisible() && !b.ToolbarButton(3)->isChecked());
    }

    // The count runs only while the board is on screen, and only reaching the interval
    // reloads, not a count already past it (the settings dialog's OK starts it again).
    void refreshCountdown_data() {
        columns<bool, int, int, int, QString, int>("shown", "interval", "count", "loads", "panel",
                                                   "countAfter");
        row("counting", true, 30, 0, 0, "Refresh in: 29 seconds", 1);
        row("interval reached", true, 1, 0, 1, "Refresh in: 0 seconds", 0);
        row("past the interval", true, 30, 40, 0, "Refresh in: -11 seconds", 41);
        row("off screen", false, 30, 5, 0, "No Network Detected", 0);
    }
    void refreshCountdown() {
        auto [shown, interval, count, loads, panel, countAfter] =
            fetch<bool, int, int, int, QString, int>("shown", "interval", "count", "loads", "panel",
                                                     "countAfter");
        auto& b = board();
        b.setVisible(shown);
        const int before = TLMain().Settings().RefreshInterval;
        TLMain().Settings().RefreshInterval = interval;
        b.lngRefreshTimerSeconds = count;
        QCOMPARE(f.sentBy([&] { b.tmrRefresh_Timer(); }).size(), loads);
        TLMain().Settings().RefreshInterval = before;
        QCOMPARE(b.StatusBarBottom->Panel(QStringLiteral("nextrefresh"))->text(), panel);
        QCOMPARE(b.lngRefreshTimerSeconds, countAfter);
    }

    // Refresh reloads; Help without a help file says so; my status opens the dialog on oneself
    // even when the read fails (the gateway's box, nobody named); Exit without shutting down
    // leaves the board in the tray; Log Off shows the sign-in.
    void toolbarButtons() {
        auto& b = board();
        QCOMPARE(f.sentBy([&] { b.ToolbarButton(2)->trigger(); }).size(), 1);
        QFile::remove(frmTLView::HelpFilePath());
        b.ToolbarButton(6)->trigger();
        QCOMPARE(f.boxes.size(), 1);
        f.gateway->setFailing([](const QString& statement) {
            return statement == QStringLiteral("EXECUTE tl_GetUserStatuses NULL,1001");
        });
        b.ToolbarButton(1)->trigger();
        f.gateway->setFailing(nullptr);
        QCOMPARE(f.boxes.size(), 2);
        QVERIFY(LoadedForm<frmTLStatus>()->isVisible());
        QCOMPARE(LoadedForm<frmTLStatus>()->lblName->text(), QStringLiteral(" "));
        Unload<frmTLStatus>();
        TLMain().Settings().ExitShutdown = false;
        b.show();
        b.ToolbarButton(10)->trigger();
        QTRY_VERIFY(!b.isVisible());
        QVERIFY(IsLoaded<frmTLView>());
        b.ToolbarButton(7)->trigger();
        QVERIFY(!TLMain().ActiveUser().ValidUser());
        QVERIFY(LoadedForm<frmTLLogin>()->isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!IsLoaded<frmTLView>());
    }

    // One's own change carries its comment into the active status row.
    void ownStatusChangeKeepsItsComment() {
        TLContact().UpdateContactStatus(1001, 1, QString(), QString(), QStringLiteral("Back at 2"));
        QCOMPARE(TLMain().ActiveStatusRow().Comment, QStringLiteral("Back at 2"));
        QCOMPARE(TLMain().ActiveStatus().StatusSys, 1);
        QCOMPARE(TLMain().ActiveStatus().StatusText, QStringLiteral("At Lunch"));
    }
};

QTEST_MAIN(TestBoard)
#include "tst_board.moc"
