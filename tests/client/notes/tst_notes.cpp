#include "Rows.h"
#include "Screenshot.h"
#include "SignInFixture.h"
#include "board/frmTLView.h"
#include "chat/frmTLChat.h"
#include "notes/frmTLContactDetails.h"
#include "notes/frmTLContactSelection.h"
#include "notes/frmTLLeaveNote.h"
#include "notes/frmTLReadNotes.h"
#include "shell/frmTLMain.h"
#include "support/frmTLAbout.h"
#include "support/frmTLHelpDesk.h"
#include <QFile>

// Notes, leaving one, picking a colleague, the colleague's card, the help desk and the about
// box, against a real server with the demo organisation signed in as ann (contact 1001).
class TestNotes : public QObject {
    Q_OBJECT
    SignInFixture f;

    // The notes as shown, newest first: text, author, and whether the row is bold and its
    // read stamp filled.
    QStringList shown(SpreadGrid& grid) {
        QStringList notes;
        for (grid.Row = 1; grid.Row <= grid.MaxRows(); ++grid.Row) {
            grid.Col = 5;
            const QString read = grid.Text().isEmpty() ? "unread" : "read";
            grid.Col = 3;
            const QString author = grid.Text();
            grid.Col = 4;
            notes << QStringList{grid.Text(), author, grid.FontBold() ? "bold" : "plain", read}
                         .join('|');
        }
        return notes;
    }

private slots:
    void initTestCase() { QVERIFY2(f.start(), qPrintable(f.server->failure())); }
    void init() {
        f.reset();
        QVERIFY(TLMain().ActiveUser().Login(QStringLiteral("ann"), QStringLiteral("demo")));
        f.boxes.clear();
    }

    // Newest first, unread bold; a click reads and marks read (again on every further click,
    // the arrow keys too); the first column deletes after asking; the author's column answers.
    void readingNotes() {
        QStringList sent = f.sentBy([&] { Form<frmTLView>().ToolbarButton(4)->trigger(); });
        QCOMPARE(sent.value(0), QStringLiteral("tl_GetContactNotes 1001, NULL, NULL, 5001"));
        auto* window = LoadedForm<frmTLReadNotes>();
        auto& grid = *window->gridNotes;
        QCOMPARE(shown(grid),
                 QStringList({"Report filed.|Bob Marsh|plain|read",
                              "Lunch on Friday?|Carol Nolan|bold|unread",
                              "Call the printer company back.|Bob Marsh|bold|unread"}));
        window->resize(760, 420);
        QVERIFY(SaveScreenshot(window, QStringLiteral("read-notes")));

        sent = f.sentBy([&] { window->gridNotes_Click(4, 2); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_SetNoteRead 5001, 2")});
        QCOMPARE(window->txtMessageText->toPlainText(), QStringLiteral("Lunch on Friday?"));
        QCOMPARE(window->lblFrom->text(), QStringLiteral("Carol Nolan"));
        QCOMPARE(shown(grid).value(1), QStringLiteral("Lunch on Friday?|Carol Nolan|plain|read"));
        QVERIFY(!f.query(QStringLiteral("SELECT dateread FROM note WHERE notesys = 2")).isNull());
        QCOMPARE(f.sentBy([&] { window->gridNotes_Click(2, 2); }).size(), 1); // again
        grid.setCurrentCell(2, 1);
        sent = f.sentBy([&] { window->gridNotes_KeyUp(40); });
        QCOMPARE(sent, QStringList{QStringLiteral("EXEC tl_SetNoteRead 5001, 1")});

        f.boxes.answer = int(vb::vbNo);
        sent = f.sentBy([&] { window->gridNotes_Click(1, 1); });
        QVERIFY(!sent.join(' ').contains(QStringLiteral("tl_DeleteNote")));
        QCOMPARE(f.boxes.size(), 1); // asked first
        QCOMPARE(grid.MaxRows(), 3);
        f.boxes.answer = int(vb::vbYes);
        sent = f.sentBy([&] { window->gridNotes_Click(1, 1); });
        QCOMPARE(sent.last(), QStringLiteral("EXEC tl_DeleteNote 3, 5001"));
        QCOMPARE(f.query(QStringLiteral("SELECT deleted FROM note WHERE notesys = 3")).toInt(), 1);
        QVERIFY(window->txtMessageText->toPlainText().isEmpty());
        QCOMPARE(shown(grid).size(), 2); // the rows below moved up, with their notes
        QCOMPARE(shown(grid).value(0), QStringLiteral("Lunch on Friday?|Carol Nolan|plain|read"));
        window->gridNotes_Click(2, 1);
        QCOMPARE(window->txtMessageText->toPlainText(), QStringLiteral("Lunch on Friday?"));

        window->gridNotes_Click(3, 2); // the author's column: a reply to Bob
        QVERIFY(LoadedForm<frmTLLeaveNote>()->isVisible());
        QCOMPARE(LoadedForm<frmTLLeaveNote>()->lblLeaveNoteTitle->text(),
                 QStringLiteral("Leave a Note for Bob Marsh"));
    }

    void noteCountCaption_data() {
        columns<int, QString, int>("unread", "caption", "image");
        row("none", 0, "My Notes", 4);
        row("nine", 9, "Notes (9)", 9);
        row("ten drops the word", 10, "(10)", 9);
    }
    void noteCountCaption() {
        auto [unread, caption, image] = fetch<int, QString, int>("unread", "caption", "image");
        TLMain().ActiveContact().NotesUnread = unread;
        Form<frmTLView>().UpdateNoteCount();
        QCOMPARE(Form<frmTLView>().ToolbarButton(4)->text(), caption);
        QCOMPARE(Form<frmTLView>().ToolbarButton(4)->property("ImageIndex").toInt(), image);
    }

    // The note as typed, quoted and trimmed; the alert mail word for word, to the receiver.
    void leavingANote_data() {
        columns<bool, bool>("alert", "privately");
        row("note alone", false, false);
        row("private, with alert", true, true);
    }
    void leavingANote() {
        auto [alert, privately] = fetch<bool, bool>("alert", "privately");
        Form<frmTLView>().ContextRow = std::make_shared<TLStatusRow>();
        Form<frmTLView>().ContextRow->Contact().LoadContactDetails(1002);
        Form<frmTLView>().mnuLeaveNote->trigger();
        auto& form = *LoadedForm<frmTLLeaveNote>();
        form.txtNoteText->setPlainText(QStringLiteral("  Bob's lunch is in the fridge "));
        form.chkEmailAlert->setChecked(alert);
        form.chkMarkPrivate->setChecked(privately);
        if (alert)
            QVERIFY(SaveScreenshot(&form, QStringLiteral("leave-note")));
        const QStringList sent = f.sentBy([&] { form.cmdOK->click(); });
        QCOMPARE(sent.value(0), QStringLiteral("EXEC tl_AddContactNote 1002,'Bob''s lunch is in "
                                               "the fridge',5001,%1")
                                    .arg(privately ? 1 : 0));
        const QString mail =
            "EXEC tl_SendEmail 'bob@demo.example','Ann Lee Has Sent You a Note From Tavlo','You "
            "have received a note from: Ann Lee\r\n\r\n  Bob''s lunch is in the fridge "
            "\r\n\r\n--------------------------\r\nPlease do not reply to this email, instead go "
            "to www.norvane.com or log into the Tavlo Application to reply or review your "
            "note.','notes@norvane.com','notes@norvane.com'";
        QCOMPARE(sent.contains(mail), alert);
        QCOMPARE(f.boxes.size(), 1); // sent, it says
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!IsLoaded<frmTLLeaveNote>());
    }

    // The own organisation, selected and listed at once (its 40 people); a click on "All" lists
    // nobody else; the pick goes on to a note or a chat, and nothing picked says so and closes.
    void pickingAColleague() {
        auto& tray = Form<frmTLMain>();
        auto pick = [&](const std::function<void()>& open, const QString& name) {
            const QStringList sent = f.sentBy([&] {
                open();
                QTRY_VERIFY(LoadedForm<frmTLContactSelection>() &&
                            LoadedForm<frmTLContactSelection>()->isActiveWindow());
            });
            auto& picker = *LoadedForm<frmTLContactSelection>();
            QVERIFY(sent.contains(QStringLiteral("EXECUTE tl_GetCompanyList")));
            QVERIFY(sent.contains(QStringLiteral("EXECUTE tl_GetContactList 1")));
            QTreeWidgetItem* all = picker.trvOrganizations->topLevelItem(0);
            QCOMPARE(all->childCount(), 1);
            QCOMPARE(picker.trvOrganizations->currentItem()->parent(), all);
            picker.trvOrganizations_NodeClick(all);
            QCOMPARE(picker.lsvContactNames->count(), 40);
            if (name.isEmpty())
                QVERIFY(SaveScreenshot(&picker, QStringLiteral("contact-selection")));
            for (auto* item : picker.lsvContactNames->findItems(name, Qt::MatchExactly))
                item->setSelected(true);
            picker.cmdOK->click();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!IsLoaded<frmTLContactSelection>());
        };
        pick([&] { tray.mnuLeaveMessage->trigger(); }, QStringLiteral("Bob Marsh"));
        QCOMPARE(LoadedForm<frmTLLeaveNote>()->Contact.ContactSys, 1002);
        // The entry is off while chat is, so its handler is called as the entry would.
        pick([&] { tray.mnuSendInstantMessage_Click(); }, QStringLiteral("Bob Marsh"));
        QCOMPARE(Form<frmTLView>().chats.value(0)->windowTitle(), QStringLiteral("Chat with bob"));
        pick([&] { tray.mnuLeaveMessage_Click(); }, QString());
        QCOMPARE(f.boxes.size(), 1); // pick someone, it says
    }

    // Home details and the extension only where the colleague allows them; the picture named by
    // picture.html (written anew each time), or its text.
    void contactCard_data() {
        columns<int, bool, QString, QString>("contact", "home", "picture", "page");
        row("home shown", 1001, true, "pictures/p1001.png",
            "<img src=\"@/pictures/p1001.png\" HEIGHT=235 WIDTH=180>");
        row("home hidden, no picture", 1002, false, "", "<dd>No Picture Available");
    }
    void contactCard() {
        auto [contact, home, picture, page] =
            fetch<int, bool, QString, QString>("contact", "home", "picture", "page");
        f.query(QStringLiteral("UPDATE contact SET picturelocation = '%1', homecity = '' WHERE "
                               "contactsys = %2")
                    .arg(picture)
                    .arg(contact));
        QFile html(frmTLContactDetails::PicturePagePath());
        QVERIFY(html.open(QIODevice::WriteOnly) && html.write("left from an earlier run") > 0);
        html.close();
        Form<frmTLView>().ContextRow = std::make_shared<TLStatusRow>();
        Form<frmTLView>().ContextRow->Contact().ContactSys = contact;
        Form<frmTLView>().mnuViewContactDetails->trigger();
        auto& card = *LoadedForm<frmTLContactDetails>();
        QCOMPARE(card.lblExtension->isVisible(), home);
        QCOMPARE(card.lblHomeAddress->isVisible(), home);
        QVERIFY(html.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(html.readAll()).trimmed(),
                 page.replace('@', TLMain().Settings().WebAddress()));
        if (home) {
            QCOMPARE(card.lblHomeCity->text(), QStringLiteral(", IL 62701"));
            QCOMPARE(card.webContactPicture->pixmap().size(), QSize(180, 235));
        } else {
            QCOMPARE(card.webContactPicture->text(), QStringLiteral("No Picture Available"));
        }
        QVERIFY(SaveScreenshot(&card, home ? "contact-card-home" : "contact-card-short"));
        card.close();
    }

    // The first priority set prefixes the subject; the body names who asks.
    void helpDesk_data() {
        columns<int, bool, QString, QString>("priority", "signedIn", "message", "subject");
        row("no priority", -1, true, "", "Tavlo Help Desk Notification");
        row("bug", 0, true, "It's broken", "Bug: Tavlo Help Desk Notification");
        row("sales, signed out", 5, false, "Prices?", "Sales: Tavlo Help Desk Notification");
    }
    void helpDesk() {
        auto [priority, signedIn, message, subject] =
            fetch<int, bool, QString, QString>("priority", "signedIn", "message", "subject");
        if (!signedIn) { // nobody has signed in since the program started
            TLMain().ActiveUser().Logout();
            TLMain().SetActiveContact(nullptr);
            TLMain().SetActiveOrganization(nullptr);
        }
        Form<frmTLView>().lblSupport->Click();
        auto& desk = *LoadedForm<frmTLHelpDesk>();
        if (priority >= 0)
            desk.optPriority[size_t(priority)]->setChecked(true);
        desk.txtMessage->setPlainText(message);
        if (priority == 0)
            QVERIFY(SaveScreenshot(&desk, QStringLiteral("help-desk")));
        const QString who = signedIn ? "Ann Lee\r\nCompany - Norvane Demo\r\nE-Mail Address - "
                                       "ann@demo.example\r\nPhone Number - 5551000000"
                                     : " \r\nCompany - \r\nE-Mail Address - \r\nPhone Number - ";
        const QString body = "\r\n\r\nName - " + who +
                             "\r\n\r\nHas submitted a help desk request with the following "
                             "information:\r\n\r\n" +
                             QString(message).replace('\'', "''");
        QCOMPARE(f.sentBy([&] { desk.cmdOK->click(); }),
                 QStringList{"EXEC tl_SendEmail 'support@norvane.com','" + subject + "','" + body +
                             "','support@norvane.com','support@norvane.com'"});
        QVERIFY(f.boxes.isEmpty());
    }

    void aboutShowsTheVersion() {
        auto& about = Form<frmTLAbout>();
        QCOMPARE(about.lblVersionNumber->text(), QStringLiteral("1.0.0"));
        QVERIFY(SaveScreenshot(&about, QStringLiteral("about")));
    }
};

TAVLO_SIGNED_IN_TEST_MAIN(TestNotes)
#include "tst_notes.moc"
