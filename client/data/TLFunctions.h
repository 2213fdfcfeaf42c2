#pragma once

#include <QString>
#include <cstdint>

class QWidget;

// Stateless helpers shared by the forms: colours, the password cipher and windows on top.
class TLFunctions {
public:
    // "RRGGBB" as a blue-green-red colour number; white for any other length.
    std::int32_t GetBackColorValue(const QString& hexColour);
    // The symmetric cipher of the remembered password: applied twice it gives the original.
    QString EncodeDecode(const QString& text);
    // Puts a window above all others, or back among them.
    void ShowOnTop(QWidget* form, bool onTop);
};
