#pragma once

#include <QString>
#include <cstdint>

class QComboBox;
class QWidget;

// Stateless helpers shared by the forms: combo fillers, text shaping, colours, the password
// cipher and the gateway's encoder.
class TLFunctions {
public:
    // Clears the combo and fills it with the 52 state codes in the program's order.
    QComboBox* cboFillStates(QComboBox* combo);
    // Adds "00:00" to "23:30" by half hours and shows the present time as "hh:mm".
    QComboBox* FillTimeCombo(QComboBox* combo);
    // Writes text as one line to a file, asking before it overwrites one.
    void WriteToFile(const QString& path, const QString& text);
    // Replaces one character at each place `find` is found, searching from the start each time.
    QString ReplaceCharacter(const QString& text, const QString& find, const QString& replacement);
    // Pads text to at least `width` (right, or left) or cuts it to `width`.
    QString FixedCharacters(const QString& text, int width, const QString& padding, bool padLeft);
    // Waits the given whole seconds while events run, with the busy pointer.
    void Delay(double seconds);
    QString FormatPhoneNumber(const QString& text, bool useParentheses);
    QString FormatZipCode(const QString& text);
    // Half up (down) and then round half to even, as whole-number doubles.
    double RoundCeiling(double value);
    double RoundFloor(double value);
    QString URLEncode(const QString& text);
    // "+" as blank and %XX as the character. A "%" as the very last character is skipped
    // (it would never end otherwise).
    QString URLDecode(const QString& text);
    // "RRGGBB" as a blue-green-red colour number; white for any other length.
    std::int32_t GetBackColorValue(const QString& hexColour);
    // The symmetric cipher of the remembered password: applied twice it gives the original.
    QString EncodeDecode(const QString& text);
    // Puts a window above all others, or back among them.
    void ShowOnTop(QWidget* form, bool onTop);
};
