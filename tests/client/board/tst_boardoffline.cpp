#include "FreshUserFolders.h"
#include "Rows.h"
#include "Rowsets.h"
#include "StubGateway.h"
#include "base/MsgBox.h"
#include "base/Screen.h"
#include "board/SpreadGrid.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
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
// statements it makes, and how a load ends when the answer is wrong.
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

    static void at(SpreadGrid& grid, int row, int col) {
        grid.Row = row;
        grid.Col = col;
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

    void wholeColumnSettingsHoldForLaterCells() {
        SpreadGrid grid;
        sheet(grid, 2, 3);
        at(grid, -1, 1);
        grid.SetCellType(SpreadGrid::CellKind::CheckBox);
        grid.SetTypeHAlign(SpreadGrid::kAlignCenter);
        grid.SetMaxRows(5);
        at(grid, 5, 1);
        grid.SetValue(1);
        QCOMPARE(grid.Value(), 1);
        QCOMPARE(shown(grid, 4, 0, Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        at(grid, 4, 1); // made after the whole-column write, by a write of its own
        grid.SetText(QString());
        QCOMPARE(shown(grid, 3, 0, Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        // A check box changes only when the program writes it.
        QCOMPARE(int(grid.model()->flags(grid.model()->index(4, 0))),
                 int(Qt::ItemIsEnabled | Qt::ItemIsSelectable));
    }

    void cellUnderThePointer() {
        SpreadGrid grid;
        sheet(grid, 3, 3);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        const QRect cell = grid.visualRect(grid.model()->index(1, 2));
        auto cellAt = [&](const QPoint& point) {
            int col = 0;
            int row = 0;
            grid.GetCellFromScreenCoord(col, row, point.x(), point.y());
            return QPoint(col, row);
        };
        QCOMPARE(cellAt(grid.viewport()->mapTo(&grid, cell.center())), QPoint(3, 2));
        QCOMPARE(cellAt(grid.horizontalHeader()->geometry().center()).y(), 0);
        const QPoint below = QPoint(5, grid.viewport()->height() - 2);
        QCOMPARE(cellAt(grid.viewport()->mapTo(&grid, below)).y(), -1);

        QSignalSpy doubles(&grid, &SpreadGrid::DblClick);
        QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, cell.center());
        QCOMPARE(doubles, (QList<QList<QVariant>>{{3, 2}}));
        QSignalSpy rights(&grid, &SpreadGrid::RightClick);
        QTest::mousePress(grid.viewport(), Qt::RightButton, {}, cell.center());
        QCOMPARE(rights.value(0).mid(0, 3), (QList<QVariant>{1, 3, 2}));
    }

    // A load in a batch: the view meets the rows only at its end, in one insertion, and a
    // reload shows only its own rows, with nothing left of the load before. A row deleted
    // afterwards takes its number with it and the sheet keeps its size.
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
                at(grid, r, 2);
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
            QCOMPARE(grid.isRowHidden(r), r == 1);
        }
        grid.SetRowItemData(after, 7);
        at(grid, 1, -1);
        grid.Row2 = 1;
        grid.DeleteRows();
        QCOMPARE(grid.MaxRows(), after);
        if (after > 1) {
            QCOMPARE(shown(grid, 0, 1, Qt::DisplayRole).toString(), QStringLiteral("new2"));
            QCOMPARE(grid.GetRowItemData(after - 1), 7);
        }
    }

    // The board's own tabs send the other lists; a location comes only from the settings,
    // where "every location" (-1) names none, as no choice (0) does.
    void listStatementsByLocation() {
        QCOMPARE(frmTLView::ListStatement(0, 5001, 0, 1, 0, -1, 7),
                 QStringLiteral("EXEC tl_GetUserStatuses NULL,NULL,1,5001,NULL"));
        QCOMPARE(frmTLView::ListStatement(0, 5001, 3, 1, 0, 2, 7),
                 QStringLiteral("EXEC tl_GetUserStatuses 3,NULL,1,5001,2"));
    }

    // The text is trimmed before the star goes: a blank in front of it stays.
    void searchTextsLoseTheirWildcards() {
        QCOMPARE(frmTLView::CleanSearchText(QStringLiteral(" %Lee *")), QStringLiteral("Lee "));
    }

    // A load that goes wrong leaves an empty sheet and one message; painting comes back on its
    // own. A person twice leaves the hourglass: that trap skips the pointer's reset.
    void aBadAnswerEmptiesTheSheet_data() {
        columns<QByteArray, QString, bool>("answer", "box", "hourglass");
        row("a person twice asks to try again", people(kColumns, {7, 8, 7}),
            "Sorry, your request was not processed properly, please try again.", true);
        row("a missing column is reported", people(kColumns.mid(0, 5), {7}),
            "Anomaly Report ::frmTLView:LoadGrid", false);
        row("no answer: the gateway's word only", QByteArray(),
            "Tavlo is unable to contact the server.", false);
    }
    void aBadAnswerEmptiesTheSheet() {
        auto [answer, box, hourglass] =
            fetch<QByteArray, QString, bool>("answer", "box", "hourglass");
        if (answer.isEmpty())
            server.reset(); // connection refused
        else
            server->setAnswer({200, "text/xml", answer, 0});
        load();
        QCOMPARE(board().gridStatus->MaxRows(), 0);
        QCOMPARE(boxes.size(), 1);
        QVERIFY2((boxes[0].title + QLatin1Char(' ') + boxes[0].text).contains(box),
                 qPrintable(boxes[0].title + QLatin1Char(' ') + boxes[0].text));
        QCOMPARE(Screen::MousePointer(), hourglass ? Screen::vbHourglass : Screen::vbDefault);
        QTRY_VERIFY(board().gridStatus->updatesEnabled());
    }
};

TAVLO_TEST_MAIN_WITH(QApplication, TestBoardOffline)
#include "tst_boardoffline.moc"
