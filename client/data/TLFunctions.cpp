#include "data/TLFunctions.h"

#include "base/Clock.h"
#include "base/MsgBox.h"
#include "base/Regional.h"
#include "base/Screen.h"
#include "base/TLError.h"
#include "wire/Cp1252.h"
#include "wire/FormEncoding.h"
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QTextStream>
#include <QWidget>
#include <cmath>

namespace {

const QStringList kStates = {
    QStringLiteral("AL"), QStringLiteral("AK"), QStringLiteral("AZ"), QStringLiteral("AR"),
    QStringLiteral("CA"), QStringLiteral("CO"), QStringLiteral("CT"), QStringLiteral("DE"),
    QStringLiteral("FL"), QStringLiteral("GA"), QStringLiteral("HI"), QStringLiteral("ID"),
    QStringLiteral("IL"), QStringLiteral("IN"), QStringLiteral("IA"), QStringLiteral("KS"),
    QStringLiteral("KY"), QStringLiteral("LA"), QStringLiteral("ME"), QStringLiteral("MD"),
    QStringLiteral("MA"), QStringLiteral("MI"), QStringLiteral("MN"), QStringLiteral("MS"),
    QStringLiteral("MO"), QStringLiteral("MT"), QStringLiteral("NE"), QStringLiteral("NV"),
    QStringLiteral("NH"), QStringLiteral("NJ"), QStringLiteral("NM"), QStringLiteral("NY"),
    QStringLiteral("NC"), QStringLiteral("ND"), QStringLiteral("OH"), QStringLiteral("OK"),
    QStringLiteral("OR"), QStringLiteral("PA"), QStringLiteral("RI"), QStringLiteral("SC"),
    QStringLiteral("SD"), QStringLiteral("TN"), QStringLiteral("TX"), QStringLiteral("UT"),
    QStringLiteral("VI"), QStringLiteral("VT"), QStringLiteral("VA"), QStringLiteral("WA"),
    QStringLiteral("DC"), QStringLiteral("WV"), QStringLiteral("WI"), QStringLiteral("WY")};

const QByteArray kKey1 = QByteArrayLiteral("q7#mz2!Kp0w&Tr8$yLe");
const QByteArray kKey2 = QByteArrayLiteral("%82hx#w5j;u;/cnbvf3");

// The digits of a phone number or zip code: the text without "-", "(", ")" and blanks.
QString digitsOf(const QString& text) {
    QString digits = text;
    for (const QChar c : {QLatin1Char('-'), QLatin1Char('('), QLatin1Char(')'), QLatin1Char(' ')})
        digits.remove(c);
    return digits;
}

bool onlyZeros(const QString& digits) {
    QString rest = digits;
    rest.remove(QLatin1Char('0'));
    return rest.isEmpty();
}

// The platform's conversion of a double to a 32-bit integer: round half to even.
double roundHalfEven(double value) {
    return static_cast<double>(Regional::CLng(value));
}

} // namespace

QComboBox* TLFunctions::cboFillStates(QComboBox* combo) {
    combo->clear();
    combo->addItems(kStates);
    return combo;
}

QComboBox* TLFunctions::FillTimeCombo(QComboBox* combo) {
    for (int minutes = 0; minutes < 24 * 60; minutes += 30)
        combo->addItem(QStringLiteral("%1:%2")
                           .arg(minutes / 60, 2, 10, QLatin1Char('0'))
                           .arg(minutes % 60, 2, 10, QLatin1Char('0')));
    combo->setEditable(true);
    combo->setEditText(Regional::Format(Clock::Now(), QStringLiteral("hh:mm")));
    return combo;
}

void TLFunctions::WriteToFile(const QString& path, const QString& text) {
    if (QFile::exists(path)) {
        if (MsgBox(QStringLiteral("File exists, would you like to overwrite?"), vb::vbYesNo) !=
            vb::vbYes) {
            MsgBox(QStringLiteral("File not exported!"));
            return;
        }
        QFile::remove(path);
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        MsgBox(QStringLiteral("File not exported!") + QStringLiteral("\r\r") +
                   QStringLiteral("Error Desciption:") + QLatin1Char('\r') + file.errorString(),
               vb::vbCritical);
        return;
    }
    file.write(wire::cp1252::encode(text) + "\r\n");
    file.close();
    MsgBox(QStringLiteral("File exported successfully!"));
}

QString TLFunctions::ReplaceCharacter(const QString& text, const QString& find,
                                      const QString& replacement) {
    QString result = text;
    if (find.isEmpty())
        return result;
    // A replacement that holds `find` would loop for ever; the callers never pass one, and
    // here it ends after one pass over the text instead.
    const bool endless = replacement.contains(find);
    qsizetype from = 0;
    for (qsizetype at = result.indexOf(find); at >= 0; at = result.indexOf(find, from)) {
        result.replace(at, 1, replacement);
        from = endless ? at + replacement.size() : 0;
    }
    return result;
}

QString TLFunctions::FixedCharacters(const QString& text, int width, const QString& padding,
                                     bool padLeft) {
    if (text.size() >= width)
        return text.left(width);
    const QString pad = padding.isEmpty() ? QStringLiteral(" ") : padding;
    QString result = text;
    while (result.size() < width)
        result = padLeft ? pad + result : result + pad;
    return result;
}

void TLFunctions::Delay(double seconds) {
    Screen::SetMousePointer(Screen::vbArrowHourglass);
    QElapsedTimer started;
    started.start();
    while (static_cast<double>(started.elapsed() / 1000) < seconds)
        DoEvents();
    Screen::SetMousePointer(Screen::vbDefault);
}

QString TLFunctions::FormatPhoneNumber(const QString& text, bool useParentheses) {
    const QString digits = digitsOf(text);
    if (onlyZeros(digits))
        return QString();
    if (digits.size() == 10) {
        if (useParentheses)
            return QLatin1Char('(') + digits.left(3) + QStringLiteral(") ") + digits.mid(3, 3) +
                   QLatin1Char('-') + digits.mid(6);
        return digits.left(3) + QLatin1Char('-') + digits.mid(3, 3) + QLatin1Char('-') +
               digits.mid(6);
    }
    if (digits.size() == 7)
        return digits.left(3) + QLatin1Char('-') + digits.mid(3);
    return text.left(20);
}

QString TLFunctions::FormatZipCode(const QString& text) {
    const QString digits = digitsOf(text);
    if (onlyZeros(digits))
        return QString();
    if (digits.size() == 9)
        return digits.left(5) + QLatin1Char('-') + digits.mid(5);
    return text;
}

double TLFunctions::RoundCeiling(double value) {
    return roundHalfEven(value + 0.5);
}

double TLFunctions::RoundFloor(double value) {
    return roundHalfEven(value - 0.5);
}

QString TLFunctions::URLEncode(const QString& text) {
    return wire::form::URLEncode(text);
}

QString TLFunctions::URLDecode(const QString& text) {
    QString result;
    qsizetype i = 0;
    while (i < text.size()) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('+')) {
            result += QLatin1Char(' ');
            ++i;
        } else if (c == QLatin1Char('%')) {
            const QString hex = text.mid(i + 1, 2);
            if (hex.isEmpty())
                break;
            bool ok = false;
            const int code = hex.toInt(&ok, 16);
            if (ok)
                result += wire::cp1252::decode(QByteArray(1, static_cast<char>(code)));
            i += 3;
        } else {
            result += c;
            ++i;
        }
    }
    return result;
}

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
