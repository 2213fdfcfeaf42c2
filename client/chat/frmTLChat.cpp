#include "chat/frmTLChat.h"

#include "base/TLError.h"
#include "board/frmTLView.h"
#include "chat/Socket.h"
#include "platform/WindowAlert.h"
#include <QCloseEvent>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocumentFragment>

namespace {

const QString kLineEnd = QStringLiteral("\r\n");

// The "selection" of the rich text box: a start and a length that later steps reuse.
class Selection {
public:
    explicit Selection(QTextEdit* rtb) : m_doc(rtb->document()) {}

    int start = 0;
    int length = 0;

    // The length as the box reports it: cut at the end of the text.
    int ReadLength() const { return std::clamp(length, 0, std::max(textLength() - start, 0)); }

    void Apply(const QColor& color, bool bold) const {
        const int from = std::clamp(start, 0, textLength());
        QTextCursor cursor(m_doc);
        cursor.setPosition(from);
        cursor.setPosition(from + std::clamp(length, 0, textLength() - from),
                           QTextCursor::KeepAnchor);
        QTextCharFormat format;
        format.setForeground(color);
        format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
        cursor.mergeCharFormat(format);
    }

private:
    int textLength() const { return m_doc->characterCount() - 1; }
    QTextDocument* m_doc;
};

} // namespace

frmTLChat::frmTLChat() {
    setupUi(this);
    setObjectName(QStringLiteral("frmTLChat"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    cmdSend->setIcon(style()->standardIcon(QStyle::SP_ArrowRight));
    txtHidden->hide();
    connect(cmdSend, &QPushButton::clicked, this, &frmTLChat::cmdSend_Click);
    // Each change of the log keeps its newest line in view.
    connect(txtMessage, &QTextEdit::textChanged, this, [this] {
        txtMessage->verticalScrollBar()->setValue(txtMessage->verticalScrollBar()->maximum());
    });
}

frmTLChat& frmTLChat::Create(const QString& tag, const QString& caption) {
    auto* window = new frmTLChat(); // owned by the form registry until its unload
    FormRegistry::instance().add(typeid(frmTLChat).name(), window);
    window->m_tag = tag;
    window->setWindowTitle(caption);
    return *window;
}

QString frmTLChat::Text(const QTextEdit* rtb) {
    return rtb->toPlainText().replace(QLatin1Char('\n'), kLineEnd);
}

void frmTLChat::SetText(QTextEdit* rtb, const QString& text) {
    rtb->setPlainText(QString(text).replace(kLineEnd, QStringLiteral("\n")));
}

// Positions follow the language's string search: 1-based, 0 for "not found".
void frmTLChat::ColorNames(QTextEdit* rtb) {
    const QString text = rtb->toPlainText();
    const int length = int(text.size());
    auto inStr = [&](int from, QChar what) {
        return from > length ? 0 : int(text.indexOf(what, std::max(from, 1) - 1)) + 1;
    };
    Selection sel(rtb);
    int pos = 1;
    int searchStart = 1;
    int previousLt = 0;
    for (;;) {
        searchStart = pos;
        const int lt = inStr(pos, QLatin1Char('<'));
        // A "<" as the very last character would be found again and again.
        if (lt == 0 || lt == previousLt)
            break;
        previousLt = lt;
        if (pos != 0 && pos != 1) {
            sel.length = lt - pos - 1;
            sel.Apply(Qt::black, false);
        }
        const int gt = inStr(lt, QLatin1Char('>'));
        pos = gt == 0 ? length : gt;
        sel.start = lt - 1;
        sel.length = pos - lt + 1;
        sel.Apply(sel.ReadLength() == 4 ? QColor(255, 0, 0) : QColor(0, 0, 255), true);
        sel.start = pos + 1;
    }
    if (pos != 0 && pos != 1) {
        sel.length = length - searchStart;
        sel.Apply(Qt::black, true);
    }
}

void frmTLChat::ShowLog(const QString& text) {
    SetText(txtHidden, text);
    ColorNames(txtHidden);
    const QTextDocumentFragment formatted(txtHidden->document());
    txtMessage->clear();
    QTextCursor(txtMessage->document()).insertFragment(formatted);
}

void frmTLChat::Flash() {
    WindowAlert::Flash(windowHandle());
}

// Every step goes on whatever the one before did: with no connection the line is still logged.
void frmTLChat::cmdSend_Click() {
    Guard([&] { txtChat->setText(txtChat->text().replace(QLatin1Char('\\'), QLatin1Char(' '))); });
    Guard([&] { txtChat->setText(txtChat->text().replace(QLatin1Char('<'), QLatin1Char('('))); });
    Guard([&] { txtChat->setText(txtChat->text().replace(QLatin1Char('>'), QLatin1Char(')'))); });
    Guard(
        [&] { ShowLog(Text(txtMessage) + kLineEnd + QStringLiteral("<me> ") + txtChat->text()); });
    Guard([&] {
        auto* board = LoadedForm<frmTLView>();
        if (board && board->Socket)
            board->Socket->SendMessage(m_tag, QString(), txtChat->text(), false, QString(),
                                       QString());
    });
    Guard([&] {
        txtChat->clear();
        txtChat->setFocus();
    });
}

void frmTLChat::closeEvent(QCloseEvent* event) {
    event->accept();
    FormRegistry::instance().unload(this);
}
