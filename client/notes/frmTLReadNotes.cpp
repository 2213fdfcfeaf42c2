#include "notes/frmTLReadNotes.h"

#include "base/Clock.h"
#include "base/MsgBox.h"
#include "base/Regional.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "base/Twips.h"
#include "directory/DirectoryLoaders.h"
#include "notes/TLNotes.h"
#include "notes/frmTLLeaveNote.h"
#include "shell/TLMain.h"
#include "shell/frmTLMain.h"
#include "shell/modTLMain.h"
#include "support/modTLErrorManagement.h"
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFileInfo>

namespace {

const QString kStamp = QStringLiteral("mm/dd/yyyy hh:mm AMPM");
constexpr std::int32_t kLinkBlue = 0xFF0000; // RGB(0, 0, 255) as the program numbers colours

QString stamp(const QString& moment) {
    return Regional::IsDate(moment) ? Regional::Format(Regional::CDate(moment), kStamp) : QString();
}

} // namespace

frmTLReadNotes::frmTLReadNotes() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLReadNotes"));
    gridNotes->setMouseTracking(true);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
    connect(gridNotes, &SpreadGrid::Click, this, &frmTLReadNotes::gridNotes_Click);
    connect(gridNotes, &SpreadGrid::KeyUp, this, &frmTLReadNotes::gridNotes_KeyUp);
    connect(gridNotes, &SpreadGrid::SpreadMouseMove, this, &frmTLReadNotes::gridNotes_MouseMove);
}

void frmTLReadNotes::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        loadWindow();
    }
    QDialog::showEvent(event);
}

void frmTLReadNotes::loadWindow() {
    TLMain().Functions().ShowOnTop(this, true);
    const auto& columns = TLMain().SpreadColumnNotes();
    gridNotes->SetMaxCols(columns.MaxColumns());
    gridNotes->Row = 0;
    const QStringList captions = {QStringLiteral("Delete"), QStringLiteral("Date Added"),
                                  QStringLiteral("Left By / Reply"), QStringLiteral("Message Text"),
                                  QStringLiteral("Date Read")};
    for (int c = 1; c <= columns.MaxColumns(); ++c) {
        gridNotes->Col = c;
        gridNotes->SetText(captions[c - 1]);
    }
    FormatGridSize();
    gridNotes->Row = -1;
    gridNotes->Col = columns.Delete();
    gridNotes->SetCellType(SpreadGrid::CellKind::CheckBox);
    gridNotes->SetTypeCheckCenter(true);
    LoadNotes();
}

void frmTLReadNotes::Form_Unload() {
    Guard([] { Form<frmTLMain>().UpdateNoteCountFromDatabase(); });
}

// The message column takes what the fixed columns leave, less a margin.
void frmTLReadNotes::FormatGridSize() {
    const auto& columns = TLMain().SpreadColumnNotes();
    gridNotes->SetReDraw(false);
    gridNotes->SetColWidth(columns.Delete(), 400);
    gridNotes->SetColWidth(columns.DateAdded(), 2200);
    gridNotes->SetColWidth(columns.LeftBy(), 1500);
    gridNotes->SetColWidth(columns.MessageText(), 3000);
    gridNotes->SetColWidth(columns.DateRead(), 2200);
    int sum = 0;
    for (int c = 1; c <= columns.MaxColumns(); ++c)
        sum += gridNotes->ColWidth(c);
    const int gridWidth = Twips::FromPixelsX(gridNotes->width(), gridNotes);
    gridNotes->SetColWidth(columns.MessageText(), gridWidth - (sum - 2500));
    gridNotes->SetReDraw(true);
}

void frmTLReadNotes::ClearNotesCollection() {
    auto& notes = modTLMain::colNotes();
    for (long n = notes.Count(); n > 0; --n)
        notes.Remove(1);
}

void frmTLReadNotes::LoadNotes() {
    try {
        Screen::SetMousePointer(Screen::vbHourglass);
        const QString sql = QStringLiteral("tl_GetContactNotes ") +
                            QString::number(Contact.ContactSys) + QStringLiteral(", NULL, NULL, ") +
                            QString::number(Contact.UserSys);
        ClearNotesCollection();
        SpreadGrid::Batch batch(*gridNotes);
        gridNotes->SetMaxRows(0);
        const auto rs = TLMain().DataAccess().LoadADOFromWeb(sql);
        int row = 0;
        for (; rs && !rs->Eof(); rs->MoveNext()) {
            auto note = std::make_shared<TLNotes>();
            note->FillObjectWithRecordSet(rs.get());
            modTLMain::colNotes().Add(note, note->Key());
            AddNoteRow(*note, ++row);
        }
        Screen::SetMousePointer(Screen::vbDefault);
    } catch (...) {
        modTLErrorManagement::ReportTrapped(QStringLiteral("frmTLReadNotes:LoadNotes"));
    }
}

void frmTLReadNotes::AddNoteRow(const TLNotes& objNote, int lngCurrentRow) {
    const auto& columns = TLMain().SpreadColumnNotes();
    auto& grid = *gridNotes;
    grid.SetMaxRows(lngCurrentRow);
    grid.Row = lngCurrentRow;
    grid.Col = -1;
    grid.SetRowItemData(lngCurrentRow, objNote.Key().toInt());
    grid.SetLock(true);
    grid.SetFontName(QStringLiteral("Microsoft Sans Serif"));
    grid.SetFontBold(objNote.DateRead.isEmpty());
    grid.SetFontSize(8);
    grid.Col = columns.MessageText();
    grid.SetText(objNote.MessageText);
    grid.Col = columns.DateAdded();
    grid.SetText(stamp(objNote.DateAdded));
    grid.Col = columns.DateRead();
    grid.SetText(stamp(objNote.DateRead));
    grid.Col = columns.LeftBy();
    grid.SetText(objNote.LeftByName);
    grid.SetFontUnderline(true);
    grid.SetForeColor(kLinkBlue);
}

// Reading marks the note read on the server; the record itself keeps its empty date, so every
// further click in this load marks it again.
void frmTLReadNotes::gridNotes_Click(int col, int row) {
    auto& root = TLMain();
    const auto& columns = root.SpreadColumnNotes();
    gridNotes->SetOperationMode(2);
    const auto note = GetObjectFromCollection(modTLMain::colNotes(),
                                              QString::number(gridNotes->GetRowItemData(row)));
    if (!note)
        return;
    lblFrom->setText(note->LeftByName);
    lblDateSent->setText(note->DateAdded);
    txtMessageText->setPlainText(note->MessageText);
    if (note->DateRead.isEmpty()) {
        root.DataAccess().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_SetNoteRead ") +
                                                QString::number(root.ActiveUser().UserSys()) +
                                                QStringLiteral(", ") + note->NoteSys,
                                            false);
        gridNotes->Row = row;
        gridNotes->Col = -1;
        gridNotes->SetFontBold(false);
        gridNotes->Col = columns.DateRead();
        gridNotes->SetText(Regional::Format(Clock::Now(), kStamp));
    }
    if (col == 1) {
        if (MsgBox(QStringLiteral("Are you sure you wish to delete this note?"),
                   vb::vbYesNo + vb::vbQuestion,
                   QStringLiteral("Delete this note?")) == vb::vbYes) {
            root.DataAccess().ExecuteSQLFromWeb(QStringLiteral("EXEC tl_DeleteNote ") +
                                                    note->NoteSys + QStringLiteral(", ") +
                                                    QString::number(root.ActiveUser().UserSys()),
                                                false);
            gridNotes->Row = row;
            gridNotes->Row2 = row;
            gridNotes->Col = -1;
            gridNotes->DeleteRows();
            gridNotes->SetMaxRows(gridNotes->MaxRows() - 1);
            txtMessageText->clear();
            lblDateSent->clear();
            lblFrom->clear();
        }
    }
    if (col == columns.LeftBy()) {
        TLContact author;
        author.LoadContactDetails(note->LeftBySys.toInt());
        auto& reply = Form<frmTLLeaveNote>();
        reply.Contact = author;
        reply.show();
    }
}

void frmTLReadNotes::gridNotes_KeyUp(int keyCode) {
    if (keyCode == 38 || keyCode == 40)
        gridNotes_Click(2, gridNotes->ActiveRow());
}

QString frmTLReadNotes::LinkCursorPath() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/icons/link.cur");
}

void frmTLReadNotes::gridNotes_MouseMove(int, int, int x, int y) {
    Guard([&] {
        int col = 0;
        int row = 0;
        gridNotes->GetCellFromScreenCoord(col, row, x, y);
        if (col != TLMain().SpreadColumnNotes().LeftBy()) {
            gridNotes->viewport()->setCursor(Qt::ArrowCursor);
            return;
        }
        const QPixmap link(LinkCursorPath());
        gridNotes->viewport()->setCursor(link.isNull() ? QCursor(Qt::PointingHandCursor)
                                                       : QCursor(link));
    });
}

void frmTLReadNotes::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    if (m_loaded)
        FormatGridSize();
}

void frmTLReadNotes::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow() && isVisible())
        Guard([] { Form<frmTLMain>().UpdateNoteCountFromDatabase(); });
}

void frmTLReadNotes::closeEvent(QCloseEvent* event) {
    event->accept();
    FormRegistry::instance().unload(this);
}
