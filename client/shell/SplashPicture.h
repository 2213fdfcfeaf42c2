#pragma once

#include <QPixmap>
#include <QSize>

// The splash's picture, drawn rather than shipped: a board of coloured rows beside the name.
QPixmap SplashPicture(QSize size);
