#pragma once

#include <QString>
#include <functional>

// Message boxes. Every box of the program goes through MsgBox(), so tests can record the text,
// icon, buttons and title and answer instead of a user. Texts keep their bare carriage returns;
// only the on-screen box turns them into line breaks.
namespace vb {
enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
};
enum MsgBoxResult : int {
    vbOK = 1,
    vbCancel = 2,
    vbAbort = 3,
    vbRetry = 4,
    vbIgnore = 5,
    vbYes = 6,
    vbNo = 7
};
} // namespace vb

inline const QString kDefaultTitle = QStringLiteral("Tavlo");

struct MsgBoxCall {
    QString text;
    int style = 0; // buttons | icon
    QString title;
    int buttons() const { return style & 0x0F; }
    int icon() const { return style & 0x70; }
};

using MsgBoxHook = std::function<int(const MsgBoxCall&)>;

// Shows a modal box and returns the button pressed (vb::MsgBoxResult). An empty title gives
// the default title "Tavlo".
int MsgBox(const QString& text, int style = vb::vbOKOnly, const QString& title = QString());

// Replaces the on-screen box (tests). An empty hook restores the real box.
void SetMsgBoxHook(MsgBoxHook hook);
