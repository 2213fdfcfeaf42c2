#include "board/frmTLView.h"

frmTLView::frmTLView() {
    setObjectName(QStringLiteral("frmTLView"));
    setWindowTitle(QStringLiteral("Tavlo"));
}
