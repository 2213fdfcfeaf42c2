#include "MsgBox.h"

#include <QApplication>
#include <QMessageBox>

namespace {

MsgBoxHook& hook() {
    static MsgBoxHook h;
    return h;
}

QMessageBox::Icon iconOf(int style) {
    switch (style & 0x70) {
    case vb::vbCritical:
        return QMessageBox::Critical;
    case vb::vbQuestion:
        return QMessageBox::Question;
    case vb::vbExclamation:
        return QMessageBox::Warning;
    case vb::vbInformation:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

struct ButtonSet {
    QList<QPair<QMessageBox::StandardButton, int>> buttons;
};

ButtonSet buttonsOf(int style) {
    using B = QMessageBox;
    switch (style & 0x0F) {
    case vb::vbOKCancel:
        return {{{B::Ok, vb::vbOK}, {B::Cancel, vb::vbCancel}}};
    case vb::vbAbortRetryIgnore:
        return {{{B::Abort, vb::vbAbort}, {B::Retry, vb::vbRetry}, {B::Ignore, vb::vbIgnore}}};
    case vb::vbYesNoCancel:
        return {{{B::Yes, vb::vbYes}, {B::No, vb::vbNo}, {B::Cancel, vb::vbCancel}}};
    case vb::vbYesNo:
        return {{{B::Yes, vb::vbYes}, {B::No, vb::vbNo}}};
    case vb::vbRetryCancel:
        return {{{B::Retry, vb::vbRetry}, {B::Cancel, vb::vbCancel}}};
    default:
        return {{{B::Ok, vb::vbOK}}};
    }
}

// A bare carriage return is a line break in the program's texts; the screen wants "\n".
QString screenText(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

int showOnScreen(const MsgBoxCall& call) {
    QMessageBox box(iconOf(call.style), call.title, screenText(call.text));
    const ButtonSet set = buttonsOf(call.style);
    for (const auto& [button, result] : set.buttons)
        box.addButton(button);
    box.setDefaultButton(set.buttons.first().first);
    box.setWindowFlag(Qt::WindowStaysOnTopHint, true);
    const auto pressed = static_cast<QMessageBox::StandardButton>(box.exec());
    for (const auto& [button, result] : set.buttons)
        if (button == pressed)
            return result;
    // Closed without a button: the cancel answer where there is one, else the first.
    for (const auto& [button, result] : set.buttons)
        if (result == vb::vbCancel || result == vb::vbNo)
            return result;
    return set.buttons.first().second;
}

} // namespace

int MsgBox(const QString& text, int style, const QString& title) {
    const MsgBoxCall call{text, style, title.isEmpty() ? kDefaultTitle : title};
    if (hook())
        return hook()(call);
    return showOnScreen(call);
}

void SetMsgBoxHook(MsgBoxHook h) {
    hook() = std::move(h);
}
