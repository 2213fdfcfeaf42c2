#pragma once

#include <QRgb>
#include <QString>
#include <cstdint>

// One cell of a SpreadModel: plain values, no object per cell. A cell is "made" at its first
// write; until then it shows nothing and has no check box, and the column's defaults (kind,
// centring, alignment) are applied when it is made.
struct SpreadCell {
    QString text;
    QRgb back = 0;
    QRgb fore = 0;
    std::uint16_t font = 0; // index into the model's font table; 0: the view's font
    std::int8_t check = -1; // -1 no check box, else Qt::Unchecked or Qt::Checked
    std::int8_t align = -1; // -1 none set, else SpreadGrid's kAlign... value
    bool made = false;
    bool hasBack = false;
    bool hasFore = false;
    bool checkCenter = false;
};
