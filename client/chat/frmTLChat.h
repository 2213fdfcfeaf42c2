#pragma once

#include "base/Forms.h"
#include "ui_frmTLChat.h"
#include <QDialog>

class QTextEdit;

// One conversation: the log (txtMessage), the line the user types (txtChat) and a hidden copy
// of the log (txtHidden) in which each new line's formatting is rebuilt before it is shown.
// The peer's full JID is the window's Tag; a closed window's Tag reads empty. Any number of
// these may be open; each is a loaded form named "frmTLChat".
class frmTLChat : public QDialog, public Ui::frmTLChat, public UnloadAware {
    Q_OBJECT
public:
    // A new window, loaded and registered, with the peer's JID and the caption.
    static frmTLChat& Create(const QString& tag, const QString& caption);

    QString Tag() const { return m_tag; }
    void Form_Unload() override { m_tag.clear(); }

    // Bold colours for the names in brackets (red for a four-character one such as "<me>",
    // blue otherwise), plain black for earlier text and bold black for the newest, in place.
    static void ColorNames(QTextEdit* rtb);
    // The log as the program reads it: lines joined by carriage return and line feed.
    static QString Text(const QTextEdit* rtb);
    static void SetText(QTextEdit* rtb, const QString& text);

    // Puts text into txtHidden, formats it and shows the result in txtMessage.
    void ShowLog(const QString& text);
    // Draws attention to the window without raising it or taking the focus.
    void Flash();

    void cmdSend_Click();

protected:
    void closeEvent(QCloseEvent* event) override;
    void reject() override { close(); } // Escape closes like the caption's button

private:
    frmTLChat();

    QString m_tag;
};
