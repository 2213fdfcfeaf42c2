#include "Rows.h"
#include "Screenshot.h"
#include "SignInFixture.h"
#include "base/Twips.h"
#include "board/frmTLView.h"
#include "directory/TLStatusRow.h"
#include "identity/frmTLLogin.h"
#include "platform/Desktop.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "status/frmTLStatus.h"
#include <QApplication>
#include <QBrush>
#include <QHeaderView>

// The board against a real server with the demo organisation, driven by control name.
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

    int cellValue(int row, int col) {
        grid().Row = row;
        grid().Col = col;
        return grid().Value();
    }

    // What the view is shown of a cell (from 1, as the board counts).
    QVariant cellData(int row, int col, int role) {
        return grid().model()->data(grid().model()->index(row - 1, col - 1), role);
    }

    // The view shows what the sheet holds: as many rows, each name where the sheet has it.
    void viewShowsTheSheet() {
        QCOMPARE(grid().model()->rowCount(), grid().MaxRows());
        const int name = TLSpreadColumns().ContactName();
        for (int r = 1; r <= grid().MaxRows(); ++r)
            QCOMPARE(cellData(r, name, Qt::DisplayRole).toString(), cellText(r, name));
    }

    int organisationPeople() {
        return f.query("SELECT COUNT(*) FROM contact WHERE organizationsys = 1").toInt();
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

    void standardViewShowsEveryoneInServerOrder() {
        // A colleague whose client says it is on chat; the demo's others have said nothing.
        QVERIFY(
            f.postAs(QStringLiteral("erin"), QStringLiteral("EXEC tl_UpdateChatStatus 1005, 1")));
        const QStringList sent = f.sentBy([&] { board().ReloadGrid(); });
        QCOMPARE(sent,
                 QStringList{QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL")});
        const auto& people = modTLMain::colContacts();
        QCOMPARE(people.Count(), long(organisationPeople()));
        QCOMPARE(grid().MaxRows(), int(people.Count()));
        QCOMPARE(board().windowTitle(), QStringLiteral("Tavlo Standard View"));
        const TLSpreadColumns columns;
        QStringList headers;
        for (int c = 0; c < 7; ++c)
            headers << grid().model()->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(headers.join(','), QStringLiteral("My,Name,Ext,Status,Returning,Time,Comment"));
        QVERIFY(!grid().horizontalHeader()->isHidden());
        QVERIFY(grid().verticalHeader()->isHidden());
        int r = 0;
        bool sawStar = false;
        for (const auto& entry : people) {
            TLStatusRow& person = *entry.item;
            ++r;
            QCOMPARE(grid().GetRowItemData(r), person.Contact().ContactSys);
            const QString star = person.User().ChatStatus() == 1 ? " *" : "";
            sawStar = sawStar || !star.isEmpty();
            QCOMPARE(cellText(r, columns.ContactName()),
                     person.Contact().LastNameFirstName() + star);
            QCOMPARE(cellText(r, columns.Ext()), person.Contact().Extension);
            QCOMPARE(cellText(r, columns.Status()), person.Status().StatusText);
            QCOMPARE(cellData(r, columns.Status(), Qt::BackgroundRole).value<QBrush>().color(),
                     QColor(QLatin1Char('#') + person.Status().ColorCode));
            QCOMPARE(cellValue(r, columns.MyContactCheck()), person.MyContact ? 1 : 0);
        }
        QVERIFY(sawStar);
        // Ann's friends are ticked.
        QCOMPARE(cellValue(standardRowOf(1002), 1), 1);
        QCOMPARE(cellValue(standardRowOf(1004), 1), 0);
        // From the second row on the name column is centred.
        QCOMPARE(cellData(1, 2, Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        QVERIFY(grid().columnWidth(6) > 0); // the comment takes the rest
        QVERIFY(SaveScreenshot(&board(), QStringLiteral("board-standard")));
    }

    void miniView_data() {
        columns<int>("across");
        row("one across", 1);
        row("five across, an exact multiple", 5);
        row("six across", 6);
    }
    void miniView() {
        QFETCH(int, across);
        TLMain().Settings().SetMaxColumns(across);
        board().TabCategories->SelectKey(QStringLiteral("ViewChoiceMini"));
        QCOMPARE(board().ActiveView, 2);
        QCOMPARE(board().windowTitle(), QStringLiteral("Tavlo Mini View"));
        const int n = organisationPeople();
        QCOMPARE(grid().MaxCols(), across + 2);
        // The row counter moves on after the last name: an exact multiple ends with an empty row.
        QCOMPARE(grid().MaxRows(), n / across + 1);
        QVERIFY(grid().horizontalHeader()->isHidden());
        QVERIFY(grid().verticalHeader()->isHidden());
        QVERIFY(grid().isColumnHidden(0)); // column 1
        for (int c = 2; c <= across + 1; ++c) {
            QVERIFY(!grid().isColumnHidden(c - 1));
            QCOMPARE(grid().columnWidth(c - 1), Twips::ToPixelsX(2000, &grid()));
        }
        QVERIFY(grid().isColumnHidden(across + 1)); // the spare column no name reaches
        int i = 0;
        for (const auto& entry : modTLMain::colContacts()) {
            const int row = 1 + i / across;
            const int col = 2 + i % across;
            QCOMPARE(board().ContactKeys.At(row, col), entry.item->Key());
            QVERIFY(cellText(row, col).startsWith(entry.item->Contact().LastNameFirstName()));
            ++i;
        }
        QCOMPARE(board().RowAtCell(1, 2)->Key(), modTLMain::colContacts()[1]->Key());
        // A double click on a person opens the status dialog: the friend branch is for the
        // standard view's box column only.
        const QString first = modTLMain::colContacts()[1]->Contact().FullName();
        const QStringList sent = f.sentBy([&] { board().gridStatus_DblClick(2, 1); });
        QVERIFY(!sent.join(' ').contains(QStringLiteral("MyFriends")));
        QVERIFY(IsLoaded<frmTLStatus>());
        QCOMPARE(LoadedForm<frmTLStatus>()->lblName->text(), first);
        Unload<frmTLStatus>();
        if (across == 5)
            QVERIFY(SaveScreenshot(&board(), QStringLiteral("board-mini")));

        // Back to the standard view: header row and all seven columns return.
        board().TabCategories->SelectKey(QStringLiteral("ViewChoiceStandard"));
        QCOMPARE(grid().MaxCols(), 7);
        QVERIFY(!grid().horizontalHeader()->isHidden() && !grid().isColumnHidden(0));
    }

    void groupTabsAndFriends() {
        QStringList sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("KEY1")); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_GetUserStatuses 1,NULL,1,5001,NULL")});
        QCOMPARE(TLMain().ActiveGroup().GroupSys, 1);
        const long sales = modTLMain::colContacts().Count();
        QVERIFY(sales > 0 && sales < organisationPeople());
        viewShowsTheSheet(); // fewer rows than the load before

        sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("MyFriends")); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_GetMyFriendsList 5001,1")});
        QCOMPARE(board().ActiveScreen, 1);
        QCOMPARE(TLMain().ActiveGroup().GroupSys, 1); // the friends list keeps the group
        QCOMPARE(grid().MaxRows(), 4);
        viewShowsTheSheet();

        sent = f.sentBy([&] { board().TabGroups->SelectKey(QStringLiteral("AllKey")); });
        QCOMPARE(sent,
                 QStringList{QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL")});
        QCOMPARE(board().ActiveScreen, 0);
        QCOMPARE(TLMain().ActiveGroup().GroupSys, 0); // the failed look-up dropped the group
        viewShowsTheSheet();
    }

    void friendBoxAddsAndRemoves() {
        const int row = standardRowOf(1004);
        QVERIFY(row > 0);
        QStringList sent = f.sentBy([&] { board().gridStatus_DblClick(1, row); });
        QCOMPARE(sent.value(0), QStringLiteral("EXECUTE tl_MyFriendsAdd 5001,1004"));
        QCOMPARE(sent.size(), 2); // and the reload
        QCOMPARE(cellValue(standardRowOf(1004), 1), 1);

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
        viewShowsTheSheet(); // the rows below moved up
    }

    void friendByMenuSendsTheUserNumber() {
        board().ContextRow = modTLMain::colContacts()[QStringLiteral("1005")];
        const QStringList sent = f.sentBy([&] { board().mnuAddMyFriends->trigger(); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXECUTE tl_MyFriendsAdd 5001,5005")});
        QCOMPARE(cellData(standardRowOf(1005), 1, Qt::CheckStateRole).toInt(),
                 int(Qt::Unchecked)); // no reload
        f.query(QStringLiteral("DELETE FROM friend WHERE usersys = 5001 AND contactsys = 1005"));
    }

    void rightsDecideWhoseStatusOpens() {
        QVERIFY(signIn(QStringLiteral("carol")));
        f.boxes.clear();
        board().gridStatus_DblClick(4, standardRowOf(1002));
        QCOMPARE(f.boxes.size(), 1);
        QCOMPARE(f.boxes[0].text,
                 QStringLiteral("Sorry, you do not have sufficient rights to change this "
                                "person's status."));
        QCOMPARE(f.boxes[0].icon(), int(vb::vbInformation));
        QVERIFY(!IsLoaded<frmTLStatus>());
        // Double clicks on the headers do nothing.
        board().gridStatus_DblClick(4, 0);
        board().gridStatus_DblClick(0, 1);
        QCOMPARE(f.boxes.size(), 1);

        board().gridStatus_DblClick(4, standardRowOf(1003)); // carol herself
        QVERIFY(IsLoaded<frmTLStatus>() && LoadedForm<frmTLStatus>()->isVisible());
        QCOMPARE(LoadedForm<frmTLStatus>()->lblName->text(), QStringLiteral("Carol Nolan"));
        Unload<frmTLStatus>();
    }

    void popupMenuFollowsRightsAndStatus() {
        // Off the name column there is no key, so no menu.
        board().gridStatus_RightClick(1, 4, 1, 10, 10);
        QVERIFY(!board().ContextRow);
        QVERIFY(!board().mnuStatusPopUp->isVisible());

        const auto& people = modTLMain::colContacts();
        std::shared_ptr<TLStatusRow> in;
        for (const auto& entry : people)
            if (entry.item->Status().StatusSys == 3 && entry.item->Contact().ContactSys != 1001)
                in = entry.item;
        QVERIFY(in);
        board().gridStatus_RightClick(1, 2, standardRowOf(in->Contact().ContactSys), 10, 10);
        QCOMPARE(board().ContextRow, in);
        QVERIFY(board().mnuStatusPopUp->isVisible());
        QVERIFY(!board().mnuStatusIn->isEnabled());
        QVERIFY(board().mnuStatusOut->isEnabled());
        QVERIFY(board().mnuStatusUnavailable->isEnabled());
        QVERIFY(board().mnuStatusOther->isEnabled());
        board().mnuStatusPopUp->close();

        QVERIFY(signIn(QStringLiteral("carol")));
        board().gridStatus_RightClick(1, 2, standardRowOf(in->Contact().ContactSys), 10, 10);
        for (QAction* entry : {board().mnuStatusIn, board().mnuStatusOut,
                               board().mnuStatusUnavailable, board().mnuStatusOther})
            QVERIFY(!entry->isEnabled());
        board().mnuStatusPopUp->close();
        // No administration links without the right, also on a board opened anew.
        QVERIFY(!board().mnuAdmin->isVisible());
        QVERIFY(!board().lblAdmin->isVisibleTo(&board()));
        board().close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Form<frmTLMain>().ShowApplicationView(1);
        QVERIFY(!board().mnuAdmin->isVisible());
        QVERIFY(!board().lblAdmin->isVisibleTo(&board()));
    }

    void menuStatusChangesReload() {
        board().ContextRow = modTLMain::colContacts()[QStringLiteral("1002")];
        const QStringList sent = f.sentBy([&] { board().mnuStatusOut->trigger(); });
        QCOMPARE(sent.value(0), QStringLiteral("EXEC tl_SetStatus 1002,8,NULL,NULL,NULL,5001"));
        QVERIFY(sent.contains(QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL")));
        QCOMPARE(modTLMain::colContacts()[QStringLiteral("1002")]->Status().StatusSys, 8);
    }

    void quickStatusLabelsSetOnesOwn() {
        QStringList sent = f.sentBy([&] { emit board().lblStatusTransUnavailable->Click(); });
        QCOMPARE(sent.value(0), QStringLiteral("EXEC tl_SetStatus 1001,6,NULL,NULL,NULL,5001"));
        QCOMPARE(TLMain().ActiveStatus().StatusSys, 6);
        sent = f.sentBy([&] { emit board().lblStatusTransIn->Click(); });
        QCOMPARE(sent.value(0), QStringLiteral("EXEC tl_SetStatus 1001,3,NULL,NULL,NULL,5001"));
    }

    void toolTipNamesTheMoment() {
        TLStatusRow row;
        row.Contact().FirstName = QStringLiteral("Bob");
        row.Contact().LastName = QStringLiteral("Marsh");
        row.Contact().Extension = QStringLiteral("201");
        row.Status().StatusSys = 8;
        row.Status().StatusText = QStringLiteral("Out");
        row.SetReturningText(QStringLiteral("01/01/00 12:00AM"));
        QCOMPARE(frmTLView::ToolTipFor(row),
                 QStringLiteral("Bob Marsh Ext: 201 Status: Out Returning: Unspecified "));
        row.Comment = QStringLiteral("  ");
        QCOMPARE(frmTLView::ToolTipFor(row),
                 QStringLiteral("Bob Marsh Ext: 201 Status: Out Returning: Unspecified "));
        row.Comment = QStringLiteral(" Back soon");
        row.Status().StatusSys = 3;
        row.Status().StatusText = QStringLiteral("In");
        QCOMPARE(frmTLView::ToolTipFor(row),
                 QStringLiteral("Bob Marsh Ext: 201 Status: In ( Back soon)"));

        // The pointer over a person's cell gives that person's text; off the sheet none.
        board().show();
        QVERIFY(QTest::qWaitForWindowExposed(&board()));
        const QRect cell = grid().visualRect(grid().model()->index(0, 3));
        const QPoint at = grid().viewport()->mapTo(&grid(), cell.center());
        board().gridStatus_MouseMove(0, 0, at.x(), at.y());
        QCOMPARE(grid().ToolTipText(), frmTLView::ToolTipFor(*modTLMain::colContacts()[1]));
        board().gridStatus_MouseMove(0, 0, -50, -50);
        QCOMPARE(grid().ToolTipText(), QString());
    }

    void searchByNameExtensionAndOrganisation() {
        auto& b = board();
        b.ToolbarButton(3)->trigger();
        QVERIFY(b.SearchVisible && b.fmeSearch->isVisible());
        QVERIFY(SaveScreenshot(&b, QStringLiteral("board-search")));
        b.txtName->setText(QStringLiteral(" Lee* "));
        QStringList sent = f.sentBy([&] { b.cmdAction[0]->click(); });
        QCOMPARE(sent, QStringList{QStringLiteral("tl_SearchContacts 'Lee',1,'',5001")});
        QVERIFY(grid().MaxRows() >= 1);
        QVERIFY(cellText(1, 2).startsWith(QStringLiteral("Lee, ")));

        b.txtName->clear();
        b.txtExtension->setText(QStringLiteral("205"));
        sent = f.sentBy([&] { QTest::keyClick(b.txtExtension, Qt::Key_Return); });
        QCOMPARE(sent, QStringList{QStringLiteral("tl_SearchContacts '',1,'205',5001")});
        QCOMPARE(grid().MaxRows(), 1);
        QCOMPARE(cellText(1, 3), QStringLiteral("205"));

        b.txtExtension->clear();
        b.txtOrganization->setText(QStringLiteral("Nowhere Ltd"));
        sent = f.sentBy([&] { b.cmdAction[0]->click(); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXECUTE tl_SearchCompany 'Nowhere Ltd'")});
        QCOMPARE(f.boxes.size(), 1);
        QCOMPARE(f.boxes[0].text, QStringLiteral("Sorry, no entries were found."));
        QCOMPARE(grid().MaxRows(), 1); // the board keeps the last search

        // Both filled: the company search first, with its message, then the contact search.
        f.boxes.clear();
        b.txtName->setText(QStringLiteral("Lee"));
        sent = f.sentBy([&] { b.cmdAction[0]->click(); });
        QCOMPARE(sent, (QStringList{QStringLiteral("EXECUTE tl_SearchCompany 'Nowhere Ltd'"),
                                    QStringLiteral("tl_SearchContacts 'Lee',1,'',5001")}));
        QCOMPARE(f.boxes.size(), 1);
        QVERIFY(grid().MaxRows() >= 1);

        // A name nobody has empties the board, caption and all columns kept.
        b.txtOrganization->clear();
        b.txtName->setText(QStringLiteral("Zzyzx"));
        sent = f.sentBy([&] { b.cmdAction[0]->click(); });
        QCOMPARE(sent, QStringList{QStringLiteral("tl_SearchContacts 'Zzyzx',1,'',5001")});
        QCOMPARE(grid().MaxRows(), 0);
        QCOMPARE(grid().MaxCols(), 7);
        QCOMPARE(b.windowTitle(), QStringLiteral("Tavlo Standard View"));
        b.txtName->clear();

        b.txtOrganization->setText(QStringLiteral(" %% * "));
        sent = f.sentBy([&] { b.cmdAction[0]->click(); });
        QVERIFY(sent.isEmpty());
        QCOMPARE(QApplication::focusWidget(), b.txtName);

        // Closing keeps the texts for the next opening.
        b.cmdAction[1]->click();
        QVERIFY(!b.SearchVisible && !b.fmeSearch->isVisible());
        QVERIFY(!b.ToolbarButton(3)->isChecked());
        b.ToolbarButton(3)->trigger();
        QCOMPARE(b.txtOrganization->text(), QStringLiteral(" %% * "));
    }

    void refreshCountsDownOnlyOnScreen() {
        auto& b = board();
        auto& settings = TLMain().Settings();
        b.show();
        QLabel* panel = b.StatusBarBottom->Panel(QStringLiteral("nextrefresh"));
        settings.RefreshInterval = 30;
        b.lngRefreshTimerSeconds = 0;
        QVERIFY(f.sentBy([&] { b.tmrRefresh_Timer(); }).isEmpty());
        QCOMPARE(panel->text(), QStringLiteral("Refresh in: 29 seconds"));
        settings.RefreshInterval = 1;
        b.lngRefreshTimerSeconds = 0;
        QCOMPARE(f.sentBy([&] { b.tmrRefresh_Timer(); }).size(), 1);
        QCOMPARE(b.lngRefreshTimerSeconds, 0);
        // Only reaching the interval reloads, not a count already past it (which the settings
        // dialog never leaves: its OK starts the count again).
        settings.RefreshInterval = 30;
        b.lngRefreshTimerSeconds = 40;
        QVERIFY(f.sentBy([&] { b.tmrRefresh_Timer(); }).isEmpty());
        QCOMPARE(panel->text(), QStringLiteral("Refresh in: -11 seconds"));
        b.hide();
        b.lngRefreshTimerSeconds = 5;
        QVERIFY(f.sentBy([&] { b.tmrRefresh_Timer(); }).isEmpty());
        QCOMPARE(panel->text(), QStringLiteral("No Network Detected"));
        QCOMPARE(b.lngRefreshTimerSeconds, 0);
        settings.RefreshInterval = 30;
    }

    void toolbarHelpRefreshAndExit() {
        auto& b = board();
        QCOMPARE(f.sentBy([&] { b.ToolbarButton(2)->trigger(); }).size(), 1);

        QList<QUrl> opened;
        Desktop::SetOpener([&](const QUrl& url) {
            opened << url;
            return true;
        });
        QFile::remove(frmTLView::HelpFilePath());
        b.ToolbarButton(6)->trigger();
        QCOMPARE(f.boxes.size(), 1);
        QCOMPARE(f.boxes[0].text,
                 QStringLiteral("The Help has not been installed on this system."));
        QVERIFY(QDir().mkpath(QFileInfo(frmTLView::HelpFilePath()).path()));
        QFile help(frmTLView::HelpFilePath());
        QVERIFY(help.open(QIODevice::WriteOnly));
        help.write("<html></html>");
        help.close();
        b.ToolbarButton(6)->trigger();
        QCOMPARE(opened, QList<QUrl>{QUrl::fromLocalFile(frmTLView::HelpFilePath())});
        QFile::remove(frmTLView::HelpFilePath());
        Desktop::SetOpener({});

        // Exit without shutting down leaves the board in the tray.
        TLMain().Settings().ExitShutdown = false;
        b.show();
        b.ToolbarButton(10)->trigger();
        QTRY_VERIFY(!b.isVisible());
        QVERIFY(IsLoaded<frmTLView>());
    }

    // The read of one's own status failing shows the gateway's box and still opens the dialog.
    void myStatusOpensTheDialogOnOneself_data() {
        columns<bool>("readFails");
        row("read answered", false);
        row("read fails", true);
    }
    void myStatusOpensTheDialogOnOneself() {
        QFETCH(bool, readFails);
        if (readFails)
            f.gateway->setFailing([](const QString& statement) {
                return statement == QStringLiteral("EXECUTE tl_GetUserStatuses NULL,1001");
            });
        board().ToolbarButton(1)->trigger();
        f.gateway->setFailing(nullptr);
        QCOMPARE(f.boxes.size(), readFails ? 1 : 0);
        QVERIFY(IsLoaded<frmTLStatus>() && LoadedForm<frmTLStatus>()->isVisible());
        auto& dialog = *LoadedForm<frmTLStatus>();
        // Without the read the dialog names nobody.
        QCOMPARE(dialog.lblName->text(),
                 readFails ? QStringLiteral(" ") : TLMain().ActiveContact().FullName());
        Unload<frmTLStatus>();
    }

    // A change of one's own record moves the active status, its comment and the panel; a
    // colleague's change leaves them alone.
    void statusChangeConcernsOnlyOnesOwn_data() {
        columns<int>("contact");
        row("own", 1001);
        row("colleague", 1002);
    }
    void statusChangeConcernsOnlyOnesOwn() {
        QFETCH(int, contact);
        const bool own = contact == 1001;
        QLabel* panel = board().StatusBarBottom->Panel(QStringLiteral("status"));
        const QString textBefore = TLMain().ActiveStatus().StatusText;
        const QString panelBefore = panel->text();
        QVERIFY(textBefore != QStringLiteral("At Lunch"));
        TLContact record;
        record.UpdateContactStatus(contact, 1, QString(), QString(), QStringLiteral("Back at 2"));
        QCOMPARE(TLMain().ActiveStatus().StatusText, own ? QStringLiteral("At Lunch") : textBefore);
        QCOMPARE(panel->text(), own ? QStringLiteral("Status: At Lunch") : panelBefore);
        if (own)
            QCOMPARE(TLMain().ActiveStatusRow().Comment, QStringLiteral("Back at 2"));
        record.UpdateContactStatus(contact, 3, QString(), QString(), QString());
    }

    void logoffShowsTheSignIn() {
        board().ToolbarButton(7)->trigger();
        QVERIFY(!TLMain().ActiveUser().ValidUser());
        QVERIFY(LoadedForm<frmTLLogin>()->isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!IsLoaded<frmTLView>());
    }
};

QTEST_MAIN(TestBoard)
#include "tst_board.moc"
