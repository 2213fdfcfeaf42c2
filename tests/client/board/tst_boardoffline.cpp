#include "FreshUserFolders.h"
#include "Rows.h"
#include "Rowsets.h"
#include "StubGateway.h"
#include "base/MsgBox.h"
#include "base/Screen.h"
#include "board/SpreadGrid.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QHeaderView>
#include <QtTest>

namespace {

// A board answer with these columns, one row a contact number; "myfriend" is 0 and every other
// column holds its own name.
QByteArray people(const QStringList& columns, const QList<int>& contacts) {
    QList<QVariantList> rows;
    for (int contact : contacts) {
        QVariantList row;
        for (const QString& column : columns)
            row << (column == "ContactSys" ? QVariant(contact)
                    : column == "myfriend" ? QVariant(0)
                                           : QVariant(column));
        rows << row;
    }
    return RowsetBytes(columns, rows);
}

const QStringList kColumns = {"ContactSys", "FirstName",     "LastName",
                              "comment",    "returningtext", "myfriend"};

} // namespace

// The board without a real server: the sheet adapter (which keeps the board's addressing: row 0
// header, column 0 row header, -1 for a whole row or column, one number carried per row), the
// statements and search texts it makes, and how a load ends when the answer is wrong.
class TestBoardOffline : public QObject {
    Q_OBJECT
    static QVariant shown(const SpreadGrid& grid, int row, int col, int role) {
        return grid.model()->data(grid.model()->index(row, col), role);
    }

    static void sheet(SpreadGrid& grid, int rows, int cols) {
        grid.resize(600, 300);
        grid.SetMaxCols(cols);
        grid.SetMaxRows(rows);
    }

    std::unique_ptr<TestHttpServer> server;
    BoxRecorder boxes;

    frmTLView& board() { return Form<frmTLView>(); }

    void load() { board().LoadGrid(5001, 0, 1, 0, QString()); }

private slots:
    void init() {
        PointAtFreshStub(server, boxes);
        Screen::SetMousePointer(Screen::vbDefault);
    }
    void cleanup() {
        FormRegistry::instance().unloadAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void headerAndCellsAreAddressedFromOne() {
        SpreadGrid grid;
        sheet(grid, 3, 4);
        grid.Row = 0;
        grid.Col = 2;
        grid.SetText(QStringLiteral("Name"));
        QCOMPARE(grid.model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Name"));
        QCOMPARE(grid.Text(), QStringLiteral("Name"));
        grid.Row = 3;
        grid.Col = 4;
        grid.SetText(QStringLiteral("corner"));
        QCOMPARE(shown(grid, 2, 3, Qt::DisplayRole).toString(), QStringLiteral("corner"));
        // Outside the sheet nothing is written and nothing grows.
        grid.Row = 4;
        grid.SetText(QStringLiteral("lost"));
        QCOMPARE(grid.MaxRows(), 3);
        QCOMPARE(grid.Text(), QString());
    }

    void wholeColumnSettingsHoldForLaterCells() {
        SpreadGrid grid;
        sheet(grid, 2, 3);
        grid.Row = -1;
        grid.Col = 1;
        grid.SetCellType(SpreadGrid::CellKind::CheckBox);
        grid.SetTypeHAlign(SpreadGrid::kAlignCenter);
        grid.SetMaxRows(5);
        grid.Row = 5;
        grid.SetValue(1);
        QCOMPARE(grid.Value(), 1);
        QCOMPARE(shown(grid, 4, 0, Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        grid.Row = 4; // made by the whole-column write, never written itself
        grid.SetText(QString());
        QCOMPARE(shown(grid, 3, 0, Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        // A check box changes only when the program writes it.
        QVERIFY(!(grid.model()->flags(grid.model()->index(4, 0)) & Qt::ItemIsUserCheckable));
        QVERIFY(!(grid.model()->flags(grid.model()->index(4, 0)) & Qt::ItemIsEditable));
        // A whole row: every column of it.
        grid.Row = 2;
        grid.Col = -1;
        grid.SetBackColor(0x0000C0); // red in the low byte
        for (int c = 0; c < 3; ++c)
            QCOMPARE(shown(grid, 1, c, Qt::BackgroundRole).value<QBrush>().color(),
                     QColor(0xC0, 0, 0));
    }

    void rowDataFollowsRowsAndGoesWithTheSheet() {
        SpreadGrid grid;
        sheet(grid, 4, 2);
        for (int r = 1; r <= 4; ++r) {
            grid.SetRowItemData(r, 1000 + r);
            grid.Row = r;
            grid.Col = 1;
            grid.SetText(QString::number(r));
        }
        grid.Row = 2;
        grid.Row2 = 3;
        grid.Col = -1;
        grid.DeleteRows();
        QCOMPARE(grid.MaxRows(), 4); // the size stays; the caller lowers it
        QCOMPARE(grid.GetRowItemData(2), 1004);
        QCOMPARE(shown(grid, 1, 0, Qt::DisplayRole).toString(), QStringLiteral("4"));
        QCOMPARE(grid.GetRowItemData(3), 0);
        grid.SetMaxRows(0);
        grid.SetMaxRows(2);
        QCOMPARE(grid.GetRowItemData(1), 0);
        QVERIFY(!shown(grid, 0, 0, Qt::DisplayRole).isValid());
        QCOMPARE(grid.GetRowItemData(99), 0);
    }

    void cellUnderThePointer() {
        SpreadGrid grid;
        sheet(grid, 3, 3);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        const QRect cell = grid.visualRect(grid.model()->index(1, 2));
        const QPoint inCell = grid.viewport()->mapTo(&grid, cell.center());
        int col = 0;
        int row = 0;
        grid.GetCellFromScreenCoord(col, row, inCell.x(), inCell.y());
        QCOMPARE(QPoint(col, row), QPoint(3, 2));
        const QPoint onHeader = grid.horizontalHeader()->geometry().center();
        grid.GetCellFromScreenCoord(col, row, onHeader.x(), onHeader.y());
        QCOMPARE(row, 0);
        const QPoint below =
            grid.viewport()->mapTo(&grid, QPoint(5, grid.viewport()->height() - 2));
        grid.GetCellFromScreenCoord(col, row, below.x(), below.y());
        QCOMPARE(row, -1);

        QSignalSpy doubles(&grid, &SpreadGrid::DblClick);
        QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(doubles.size(), 1);
        QCOMPARE(doubles[0], (QList<QVariant>{3, 2}));
        QSignalSpy rights(&grid, &SpreadGrid::RightClick);
        QTest::mousePress(grid.viewport(), Qt::RightButton, {}, cell.center());
        QCOMPARE(rights.size(), 1);
        QCOMPARE(rights[0].mid(0, 3), (QList<QVariant>{1, 3, 2}));
    }

    // A load in a batch: the view meets the rows only at its end, in one insertion, and a
    // reload shows only its own rows, with nothing left of the load before.
    void batchedLoadsReplaceTheRows_data() {
        columns<int, int>("before", "after");
        row("fewer", 5, 2);
        row("more", 2, 5);
        row("none", 3, 0);
    }
    void batchedLoadsReplaceTheRows() {
        auto [before, after] = fetch<int, int>("before", "after");
        SpreadGrid grid;
        QAbstractItemModelTester tester(grid.model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        sheet(grid, 0, 2);
        auto load = [&grid](int rows, const QString& tag) {
            SpreadGrid::Batch batch(grid);
            grid.SetMaxRows(0);
            for (int r = 1; r <= rows; ++r) {
                grid.SetMaxRows(r);
                grid.Row = r;
                grid.Col = 2;
                grid.SetText(tag + QString::number(r));
                grid.SetRowHidden(r == 2);
            }
            QCOMPARE(grid.model()->rowCount(), 0);
        };
        load(before, QStringLiteral("old"));
        QSignalSpy inserted(grid.model(), &QAbstractItemModel::rowsInserted);
        load(after, QStringLiteral("new"));
        QCOMPARE(inserted.size(), after > 0 ? 1 : 0);
        QCOMPARE(grid.model()->rowCount(), after);
        for (int r = 0; r < after; ++r) {
            QCOMPARE(shown(grid, r, 1, Qt::DisplayRole).toString(), "new" + QString::number(r + 1));
            QVERIFY(!shown(grid, r, 0, Qt::DisplayRole).isValid());
            QCOMPARE(grid.isRowHidden(r), r == 1);
        }
    }

    void listStatements_data() {
        columns<int, int, int, QString>("screen", "group", "location", "statement");
        row("all, no location", 0, 0, 0, "EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL");
        row("all, every location", 0, 0, -1, "EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL");
        row("group and location", 0, 3, 2, "EXEC tl_GetUserStatuses 3,NULL,1,5001,2");
        row("friends", 1, 3, 2, "EXEC tl_GetMyFriendsList 5001,7");
        row("companies", 2, 0, 0, "EXEC tl_GetCompanyList 5001");
        row("unknown list", 5, 0, 0, "");
    }
    void listStatements() {
        auto [screen, group, location, statement] =
            fetch<int, int, int, QString>("screen", "group", "location", "statement");
        QCOMPARE(frmTLView::ListStatement(screen, 5001, group, 1, 0, location, 7), statement);
    }

    void searchTextsLoseTheirWildcards() {
        QCOMPARE(frmTLView::CleanSearchText(QStringLiteral(" %Lee% ")), QStringLiteral("Lee"));
        QCOMPARE(frmTLView::CleanSearchText(QStringLiteral("%% %")), QString());
        QCOMPARE(frmTLView::CleanSearchText(QStringLiteral("*")), QString());
        // Trimmed before the star goes: a blank in front of it stays.
        QCOMPARE(frmTLView::CleanSearchText(QStringLiteral("Lee *")), QStringLiteral("Lee "));
    }

    void anAnswerFillsTheSheet_data() {
        columns<QList<int>>("contacts");
        row("three people", QList<int>{7, 8, 9});
        row("nobody", QList<int>{});
    }
    void anAnswerFillsTheSheet() {
        QFETCH(QList<int>, contacts);
        server->setAnswer({200, "text/xml", people(kColumns, contacts), 0});
        load();
        QCOMPARE(board().gridStatus->MaxRows(), contacts.size());
        QCOMPARE(board().windowTitle(), QStringLiteral("Tavlo Standard View"));
        QVERIFY(boxes.isEmpty());
        QCOMPARE(Screen::MousePointer(), Screen::vbDefault);
        QVERIFY(!board().gridStatus->ReDraw()); // left off; painting comes back on its own
        QTRY_VERIFY(board().gridStatus->updatesEnabled());
    }

    void aPersonTwiceAsksToTryAgain() {
        server->setAnswer({200, "text/xml", people(kColumns, {7, 8, 7}), 0});
        load();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].text, QStringLiteral("Sorry, your request was not processed properly, "
                                               "please try again."));
        QCOMPARE(boxes[0].icon(), int(vb::vbInformation));
        QCOMPARE(board().gridStatus->MaxRows(), 0);
        QCOMPARE(modTLMain::colContacts().Count(), 2L);        // what was read before the repeat
        QCOMPARE(Screen::MousePointer(), Screen::vbHourglass); // the trap skips the reset
    }

    void noAnswerEndsWithoutAWord() {
        server.reset(); // connection refused: the gateway tells, the board says nothing more
        load();
        QCOMPARE(board().gridStatus->MaxRows(), 0);
        for (const MsgBoxCall& box : boxes)
            QVERIFY(!box.title.contains(QStringLiteral("LoadGrid")));
    }

    void aMissingColumnIsReported() {
        QStringList columns = kColumns;
        columns.removeAll(QStringLiteral("myfriend"));
        server->setAnswer({200, "text/xml", people(columns, {7}), 0});
        load();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes[0].title, QStringLiteral("Anomaly Report ::frmTLView:LoadGrid"));
        QCOMPARE(board().gridStatus->MaxRows(), 0);
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestBoardOffline)
#include "tst_boardoffline.moc"
