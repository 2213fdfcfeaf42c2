#pragma once

#include "base/Forms.h"
#include "directory/TLContact.h"
#include "ui_frmTLReadNotes.h"
#include <QDialog>
#include <memory>

class TLNotes;

// The signed-in person's notes: a sheet of them on top (unread ones bold), the chosen note
// below. A click reads a note and marks it read, the first column deletes it, the author's
// column answers it. Stays on top of the board.
class frmTLReadNotes : public QDialog, public Ui::frmTLReadNotes, public UnloadAware {
    Q_OBJECT
public:
    frmTLReadNotes();
    void Form_Unload() override;

    TLContact Contact; // whose notes; set before the form shows

    void FormatGridSize();
    void LoadNotes();
    void AddNoteRow(const TLNotes& objNote, int lngCurrentRow);
    void ClearNotesCollection();

    void gridNotes_Click(int col, int row);
    void gridNotes_KeyUp(int keyCode);
    void gridNotes_MouseMove(int button, int shift, int x, int y);

    // The program's folder + "/icons/link.cur": the pointer over the author's column.
    static QString LinkCursorPath();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override; // the message column follows the window
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override { close(); }

private:
    // The window loads when it first shows, once the opener has set Contact.
    void loadWindow();
    bool m_loaded = false;
};
