#include "StubGateway.h"
#include "FreshUserFolders.h"
#include "Rows.h"
#include "TestHttpServer.h"
#include "base/MsgBox.h"
#include "base/Screen.h"
#include "board/frmTLView.h"
#include "shell/TLMain.h"
#include "shell/modTLMain.h"
#include "wire/RowsetWriter.h"
#include <QApplication>
#include <QtTest>

namespace {

// A board answer of people with just these columns, one row a contact number.
QByteArray people(const QStringList& columns, const QList<int>& contacts) {
    wire::Rowset rowset;
    for (const QString& column : columns)
        rowset.columns.push_back({column,
                                  column,
                                  int(rowset.columns.size()) + 1,
                                  column == "ContactSys" || column == "myfriend"
                                      ? wire::FieldType::I4
                                      : wire::FieldType::String,
                                  {},
                                  -1,
                                  true});
    for (int contact : contacts) {
        std::vector<QVariant> row;
        for (const QString& column : columns)
            row.push_back(column == "ContactSys" ? QVariant(contact)
                          : column == "myfriend" ? QVariant(0)
                                                 : QVariant(column));
        rowset.rows.push_back(row);
    }
    return wire::RowsetWriter::write(rowset);
}

const QStringList kColumns = {"ContactSys", "FirstName",     "LastName",
                              "comment",    "returningtext", "myfriend"};

} // namespace

// How a load ends when the answer is wrong: a person twice, no answer, a missing column.
class TestBoardFailures : public QObject {
    Q_OBJECT
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

int main(int argc, char** argv) {
    FreshUserFolders folders;
    QApplication app(argc, argv);
    TestBoardFailures test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_boardfailures.moc"
