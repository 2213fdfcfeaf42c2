#include "data/TLFunctions.h"

#include "base/TLError.h"
#include "wire/Cp1252.h"
#include <QWidget>

namespace {

const QByteArray kKey1 = QByteArrayLiteral("q7#mz2!Kp0w&Tr8$yLe");
const QByteArray kKey2 = QByteArrayLiteral("%82hx#w5j;u;/cnbvf3");

} // namespace

std::int32_t TLFunctions::GetBackColorValue(const QString& hexColour) {
    if (hexColour.size() != 6)
        return 0xFFFFFF;
    bool okRed = false, okGreen = false, okBlue = false;
    const int red = hexColour.mid(0, 2).toInt(&okRed, 16);
    const int green = hexColour.mid(2, 2).toInt(&okGreen, 16);
    const int blue = hexColour.mid(4, 2).toInt(&okBlue, 16);
    if (!okRed || !okGreen || !okBlue)
        Raise(errTypeMismatch);
    return red | (green << 8) | (blue << 16);
}

QString TLFunctions::EncodeDecode(const QString& text) {
    const QByteArray bytes = wire::cp1252::encode(text);
    QByteArray out(bytes.size(), '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        out[i] = static_cast<char>(bytes[i] ^ kKey1[i % kKey1.size()] ^ kKey2[i % kKey2.size()]);
    return wire::cp1252::decode(out);
}

void TLFunctions::ShowOnTop(QWidget* form, bool onTop) {
    const bool visible = form->isVisible();
    form->setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    if (visible)
        form->show(); // changing the flags hides a window; put it back
}
