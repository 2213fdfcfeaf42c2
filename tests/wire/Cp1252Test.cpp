#include "wire/Cp1252.h"

#include "Rows.h"
#include <QtTest>
#include <cerrno>
#include <iconv.h>

using namespace wire;

namespace {

// The C library's own Windows-1252 table, for the 251 assigned bytes: an independent check of
// ours. Returns the character, or nothing for the unassigned bytes (which the library refuses).
std::optional<char16_t> libraryDecode(unsigned char byte) {
    iconv_t cd = iconv_open("UTF-16LE", "CP1252");
    if (cd == iconv_t(-1))
        qFatal("no CP1252 converter in the C library");
    char in[1] = {char(byte)};
    char out[4] = {};
    char* inp = in;
    char* outp = out;
    size_t inLeft = 1;
    size_t outLeft = sizeof out;
    const size_t rc = iconv(cd, &inp, &inLeft, &outp, &outLeft);
    iconv_close(cd);
    if (rc == size_t(-1) || outLeft != 2)
        return std::nullopt;
    return char16_t(static_cast<unsigned char>(out[0]) | static_cast<unsigned char>(out[1]) << 8);
}

} // namespace

class Cp1252Test : public QObject {
    Q_OBJECT
private slots:
    void everyByteDecodesAsTheCodePageSays() {
        int assigned = 0;
        for (int b = 0; b < 256; ++b) {
            const char byte = char(b);
            const QString decoded = cp1252::decode(QByteArrayView(&byte, 1));
            QCOMPARE(decoded.size(), 1);
            if (const auto expected = libraryDecode(static_cast<unsigned char>(b))) {
                ++assigned;
                QCOMPARE(decoded.at(0).unicode(), *expected);
            } else {
                // Unassigned: the C1 control of the same value.
                QCOMPARE(int(decoded.at(0).unicode()), b);
            }
            // And every byte comes back from its character.
            QCOMPARE(cp1252::encode(decoded), QByteArray(1, byte));
            QCOMPARE(cp1252::encodeChar(decoded.at(0)), byte);
        }
        QCOMPARE(assigned, 251);
    }

    void charactersOutsideTheCodePageBecomeQuestionMarks_data() {
        columns<QString, QByteArray>("text", "bytes");
        row("latin extended", QString("\u0100\u017F"), QByteArray("??"));
        row("CJK", QString("中文"), QByteArray("??"));
        row("C1 control with a character of its own", QString("\u0080\u009F"), QByteArray("??"));
        row("emoji: each half", QString("😀"), QByteArray("??"));
        row("mixed", QString("Zoë € ™ Ω"), QByteArray("Zo\xEB \x80 \x99 ?"));
    }
    void charactersOutsideTheCodePageBecomeQuestionMarks() {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        QCOMPARE(cp1252::encode(text), bytes);
    }
};

QTEST_GUILESS_MAIN(Cp1252Test)
#include "Cp1252Test.moc"
